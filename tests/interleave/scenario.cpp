#include "interleave/scenario.h"

#include <sys/mman.h>

#include "support/mem_local.h"

namespace QuaskTesting {

ScheduledMemory::PlaceOf placesIn(Quask::QuaskReaderGeneric const& reader)
{
    return [&reader](void const* address) {
        auto const* const byte = static_cast<char const*>(address);
        auto const* const buckets = reinterpret_cast<char const*>(&reader.liveBucketsHeader());
        if (byte >= buckets && byte < buckets + Mem::pageSize_) {
            return std::pair{TableFile::buckets, static_cast<std::uint64_t>(byte - buckets)};
        }
        auto const* const slots = reinterpret_cast<char const*>(&reader.liveSlotsHeader());
        return std::pair{TableFile::slots, static_cast<std::uint64_t>(byte - slots)};
    };
}

Obstacle::Obstacle(Quask::QuaskReaderGeneric const& reader)
{
    auto* const end =
        reinterpret_cast<char*>(
            const_cast<Quask::SlotTable<Quask::EmptyValue>::Header*>(&reader.liveSlotsHeader())) +
        reader.readableSlotBytes();
    // Where something lies already, that is the obstacle.
    page_ = mmap(end, Mem::pageSize_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE,
                 -1, 0);
}

Obstacle::~Obstacle()
{
    if (page_ != MAP_FAILED) {
        munmap(page_, Mem::pageSize_);
    }
}

Scenario::Scenario(SmallTable::Shape const& shape, std::vector<Operation> const& operations)
    : table_(shape), replay_(table_.directory())
{
    stores = storesOf(table_.writer(), [&] { carryOut(operations); });
}

Scenario::Scenario(SmallTable::Shape const& shape, Death const& death,
                   std::vector<Operation> const& operations)
    : Scenario(shape, {death.operation})
{
    possible_ = possible_ && death.stores < stores.size();
    if (!possible_) {
        return;
    }
    stores.resize(death.stores);
    replay_.restore();
    for (StoreStep const& store : stores) {
        replay_.apply(store);
    }
    table_.openForTakeOver();
    auto const more = storesOf(table_.writer(), [&] {
        table_.takeOver();
        carryOut(operations);
    });
    stores.insert(stores.end(), more.begin(), more.end());
}

void Scenario::carryOut(std::vector<Operation> const& operations)
{
    for (Operation const& operation : operations) {
        possible_ = possible_ && operation.run(table_);
    }
}

unsigned Scenario::endless()
{
    unsigned const loadsOfSlot = 8 + table_.valueSize() / 8 + 2;
    unsigned const loadsOfGrowth = 30;
    unsigned const walkedSlots = SmallTable::elements + 4;  // at most, with what is inserted
    return 3 * (SmallTable::walkedBuckets + walkedSlots * loadsOfSlot) + loadsOfGrowth;
}

std::string Scenario::setUp(Quask::QuaskReaderGeneric& reader)
{
    std::string error = "a file is missing or empty";
    return reader.attach() && reader.validate(error) ? "" : "the setup fails: " + error;
}

}  // namespace QuaskTesting
