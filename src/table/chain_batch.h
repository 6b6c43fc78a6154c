#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>

#include "mem/atomics.h"
#include "support/watched_mapping.h"
#include "table/bucket_reader_table.h"
#include "table/link_loads.h"
#include "table/slot_reader_generic_table.h"
#include "table/slot_ref.h"

namespace Quask {

// One element of a batch, as a handler is given it.
struct BatchElement
{
    unsigned bucket;
    SlotRef ref;                 // the link that led to it
    SlotRef next;                // its own link; of the last of a chain the null link that ended it
    std::uint32_t sequence;      // the state word that the value agrees with
    unsigned char const* value;  // private memory, valid until the next read()
    unsigned isFirst;            // of its chain: 1, else 0. Not a bool, see ChainBatch
    unsigned isLast;
};

// The checks that make a batch right; a test may leave one out, as with AllWalkChecks.
struct AllBatchChecks
{
    static constexpr bool reach = true;        // a link leads to a slot that can be read
    static constexpr bool sequence = true;     // a value's state word is looked at again
    static constexpr bool lookaside = true;    // a value that is being rewritten is noticed
    static constexpr bool linkVersion = true;  // a followed link is looked at again
    static constexpr bool overlap = true;      // slots lie side by side
    static constexpr bool growth = true;       // slots that a writer has published are noticed
    static constexpr bool valueSize = true;    // a header that says another size is noticed
    static constexpr bool pages = true;        // a page that cannot be read is noticed
};

// Walks the chains of neighbouring buckets at once, as long as nothing is out of the ordinary: the
// first slots of all these chains are read, then the second ones of those that go on, and so on. It
// rests on these invariants:
//
// 1. A slot is read by the same loads, in the same order, as ChainWalk reads it: its value between
//    two looks at its sequence word, then its next link, then the version of the link that led to
//    it. Loads for other chains come in between, as if the walk had paused there.
// 2. A batch is good only if nothing was met that ChainWalk would do something about: another
//    sequence word or its lookaside bit, a rewritten link, a slot out of reach, slots that overlap,
//    a grown table, values of another size, a page that cannot be read; and no more elements than
//    there is room for, as in a circle. Else it is thrown away, and ChainWalk walks its chains.
// 3. Nothing is handed out before the whole batch was found good. So no slot is handed out without
//    a look at the number of slots that was made after it was read.
//
// It follows that each chain of a good batch is one walk from its head to its end as ChainWalk
// makes it; see there for what that means.
//
// Where a chain ends is a matter of chance, and a processor that guesses wrong loses more time than
// it takes to read a slot. So nothing branches on it: what may come next is always written down,
// and counted if it is there. Numbers say so, 0 or 1, since compilers make branches of conditions.
//
// Nothing is allocated; the object has about 100 KiB. One thread.
class ChainBatch
{
public:
    // Buckets of a batch, found by measurement. Fewer give the memory less time to answer; with
    // more, a writer spoils more batches.
    static constexpr unsigned width = 64;

    // Values of more bytes are not read in batches: they take longer than a wrong guess does.
    static constexpr unsigned largestValue = 256;

    // Both tables are used, not owned; they must be set up. Values have `valueSize` bytes.
    ChainBatch(BucketReaderTable const& buckets, SlotReaderGenericTable const& slots,
               unsigned valueSize)
        : buckets_(buckets),
          slots_(slots),
          valueSize_(valueSize),
          pauseEnd_(valueSize > largestValue ? ~0u : 0)
    {}

    // Reads the chains of `count` buckets from `first` on: at least 1, at most `width`, and all of
    // them there. `layout` is that of the current mapping. False when the chains are to be walked
    // one by one; there is no batch then. After batches that were not good some are not even tried,
    // so that a table that is not made for them costs little more than without.
    template <typename Checks = AllBatchChecks>
    bool read(SlotLayout const& layout, unsigned first, unsigned count)
    {
        if (first < pauseEnd_) {
            return false;
        }
        // A page that cannot be read may belong to a chain after the one at which the run is to
        // end.
        Mem::ZerosForNow const zerosForNow;
        if (!readChains<Checks>(layout, first, count) ||
            (Checks::pages && zerosForNow.hasReplaced())) [[unlikely]] {
            pause_ = std::min(2 * pause_ + width, longestPause);
            pauseEnd_ = first + pause_;
            return false;
        }
        pause_ = 0;
        return true;
    }

    // Of the batch that was read last, if that was good: its buckets, and the number of elements in
    // their chains.
    unsigned firstBucket() const { return firstBucket_; }
    unsigned bucketCount() const { return bucketCount_; }
    unsigned size() const { return size_; }

    // Calls `visit` with each BatchElement of the good batch, chain by chain, in the order of the
    // buckets and of the chains.
    template <typename Visit>
    [[gnu::always_inline]] void forEach(Visit&& visit) const
    {
        unsigned chain = 0;  // number of the chain, which is also that of its first entry
        unsigned at = 0;
        unsigned isFirst = 1;
        for (unsigned left = size_; left > 0; --left) {
            Entry const& entry = entries_[at];
            unsigned const isLast = 1u - entry.goesOn;
            visit(BatchElement{bucketOfChain_[chain], entry.ref, entry.next, entry.sequence,
                               values_.data() + std::size_t{at} * valueSize_, isFirst, isLast});
            chain += isLast;
            at = chain + entry.goesOn * (entry.nextEntry - chain);
            isFirst = isLast;
        }
    }

private:
    static constexpr std::size_t maximumSize = 1024;                  // elements
    static constexpr std::size_t valueRoom = std::size_t{64} * 1024;  // bytes
    static constexpr unsigned longestPause = 64 * width;              // buckets

    // A link that was found, and what was read of the slot to which it leads.
    struct Entry
    {
        SlotRef ref;
        void const* linkAddress;  // where `ref` lies
        SlotRef next;
        std::uint32_t sequence;
        std::uint16_t nextEntry;  // the entry of `next`, if that leads on
        std::uint16_t goesOn;     // whether it does: 1, else 0
    };
    static_assert(sizeof(Entry) == 32);

    // What was read of one slot, but for the value.
    struct Reading
    {
        SlotRef next;
        std::uint32_t sequence;
        bool isGood;
    };

    // Not a part of the walk's loop, which would leave it too few registers.
    template <typename Checks>
    [[gnu::noinline]] bool readChains(SlotLayout const layout, unsigned first, unsigned count)
    {
        firstBucket_ = first;
        bucketCount_ = count;
        unsigned const valueSize = valueSize_;
        unsigned const room = roomIn<Checks>(layout);
        unsigned found = readHeads(first, count);
        unsigned char* value = values_.data();
        for (unsigned at = 0; at < found; ++at, value += valueSize) {
            Entry& entry = entries_[at];
            bool const isInReach = entry.ref.index < layout.reachable || !Checks::reach;
            if (found > room || !isInReach) [[unlikely]] {
                return false;
            }
            auto const* const slot = Mem::Atomics::knownAligned(layout.slot(entry.ref.index));
            Reading const reading =
                readSlot<Checks>(slot, value, valueSize, entry.ref, entry.linkAddress);
            if (!reading.isGood) [[unlikely]] {
                return false;
            }
            unsigned const goesOn = reading.next.isNull() ? 0 : 1;
            entry.next = reading.next;
            entry.sequence = reading.sequence;
            entry.nextEntry = static_cast<std::uint16_t>(found);
            entry.goesOn = static_cast<std::uint16_t>(goesOn);
            entries_[found].ref = reading.next;
            entries_[found].linkAddress = slot + SlotReaderGenericTable::nextOffset;
            found += goesOn;
        }
        size_ = found;
        // Both words lie in the cache line that a writer changes all the time.
        bool const hasGrown = Checks::growth && slots_.hasGrown();
        return !hasGrown && (slots_.liveValueSize() == valueSize || !Checks::valueSize);
    }

    // How many elements a batch may have.
    template <typename Checks>
    unsigned roomIn(SlotLayout const& layout) const
    {
        bool const overlap = layout.slotSize < SlotReaderGenericTable::valueOffset + valueSize_;
        if (Checks::overlap && overlap) {
            return 0;
        }
        return static_cast<unsigned>(std::min(maximumSize, valueRoom / std::max(valueSize_, 1u)));
    }

    // Writes down the links of the buckets; how many lead on.
    unsigned readHeads(unsigned first, unsigned count)
    {
        SlotRef const* const links = &buckets_.getRef(first);
        unsigned found = 0;
        for (unsigned i = 0; i < count; ++i) {
            SlotRef const link = loadLink(links + i);
            entries_[found].ref = link;
            entries_[found].linkAddress = links + i;
            bucketOfChain_[found] = first + i;
            found += link.isNull() ? 0 : 1;
        }
        return found;
    }

    // Reads the slot to which `link` leads, which lies at `linkAddress`. The orders are those of
    // ChainWalk::readFound(), for its reasons.
    template <typename Checks>
    [[gnu::always_inline]] static Reading readSlot(unsigned char const* slot, unsigned char* value,
                                                   unsigned valueSize, SlotRef const link,
                                                   void const* const linkAddress)
    {
        auto const* const word = slot + SlotReaderGenericTable::sequenceOffset;
        std::uint32_t const sequence = Mem::Atomics::load32(word, std::memory_order_acquire);
        Mem::Atomics::copy(value, slot + SlotReaderGenericTable::valueOffset, valueSize);
        Mem::Atomics::fenceAcquire();
        std::uint32_t const again = Mem::Atomics::load32(word, std::memory_order_acquire);
        SlotRef const next = loadLink(slot + SlotReaderGenericTable::nextOffset);
        bool const isInChain = isUnchanged(Mem::Atomics::knownAligned(linkAddress), link);
        bool const isBeingRewritten = (sequence & Slot<EmptyValue>::LOOKASIDE) != 0;
        return {next, sequence,
                (again == sequence || !Checks::sequence) &&
                    (!isBeingRewritten || !Checks::lookaside) &&
                    (isInChain || !Checks::linkVersion)};
    }

    BucketReaderTable const& buckets_;
    SlotReaderGenericTable const& slots_;
    unsigned const valueSize_;
    unsigned firstBucket_ = 0;
    unsigned bucketCount_ = 0;
    unsigned size_ = 0;
    unsigned pause_ = 0;  // buckets that were left out after the last batch, which was not good
    unsigned pauseEnd_;   // no batch is tried before this bucket
    std::array<unsigned, width + 1> bucketOfChain_;
    std::array<Entry, maximumSize + 1> entries_;
    std::array<unsigned char, valueRoom> values_;
};

// A ScanHandler that also takes the chains of a batch all at once. handleBatch() stands for the
// calls of handleSlot() and done() for each of the batch's buckets, which are then not made; false
// ends the walk. Chains that are not read in a batch come in the calls of every ScanHandler.
template <typename Handler>
concept BatchHandler = requires(Handler& handler, ChainBatch const& batch)
{
    {
        handler.handleBatch(batch)
        } -> std::same_as<bool>;
};

}  // namespace Quask
