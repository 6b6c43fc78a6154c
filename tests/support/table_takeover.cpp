#include <cstddef>
#include <stdexcept>
#include <vector>

#include "support/shared_store.h"
#include "support/table_writer.h"

// What a writer mends that takes a table over. Readers may be walking it at the same time, and this
// writer may die as well: each store leaves a table that can be taken over.
namespace QuaskTesting {

using namespace SharedStore;

void TableWriter::finishUpdate()
{
    std::uint32_t const count = slots();
    for (std::uint32_t slot = 0; slot < count; ++slot) {
        std::byte* const sequence = record(slot) + RecordOffset::sequence;
        std::uint32_t const left = loadOwn32(sequence);
        if ((left & lookasideBit) == 0) {
            continue;
        }
        releaseFence();  // 3, for the dead writer's store
        copyBytes(valueOf(slot), slotsWord(SlotsOffset::lookaside + RecordOffset::value),
                  valueSize_);
        store32(sequence, (left + 4) & ~lookasideBit, std::memory_order_release);  // 4
    }
}

void TableWriter::mendLists()
{
    std::uint32_t const count = slots();
    std::vector<bool> listed(count);
    auto const list = [&](std::uint32_t slot) {
        if (slot >= count || listed[slot]) {
            throw std::runtime_error("the chains are damaged in a way that no writer leaves");
        }
        listed[slot] = true;
    };
    auto const nextOf = [&](std::uint32_t slot) { return pairValue(loadOwn64(record(slot))); };

    std::uint32_t occupied = 0;
    for (std::uint32_t bucket = 0; bucket < numBuckets_; ++bucket) {
        std::uint32_t slot = pairValue(loadOwn64(bucketLink(bucket)));
        for (; slot != noSlot; slot = nextOf(slot)) {
            list(slot);
            ++occupied;
        }
    }

    // The free list of a writer that died growing the table may lead to slots that do not count
    // yet.
    std::uint32_t last = noSlot;
    std::uint32_t slot = freeHead();
    for (; slot != noSlot && (slot < count || last == noSlot); slot = nextOf(slot)) {
        list(slot);
        last = slot;
    }
    if (slot != noSlot) {
        relink(record(last), noSlot);
    }

    // Highest first, so that the lowest is used first.
    for (slot = count; slot-- > 0;) {
        if (!listed[slot]) {
            putIntoFreeList(slot);
        }
    }
    if (occupiedSlots() != occupied) {
        setOccupiedSlots(occupied);
    }
}

}  // namespace QuaskTesting
