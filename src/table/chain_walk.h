#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "mem/atomics.h"
#include "table/bucket_reader_table.h"
#include "table/chain_batch.h"
#include "table/chain_cycle.h"
#include "table/chain_prefetch.h"
#include "table/direction.h"
#include "table/link_loads.h"
#include "table/reader_statistics.h"
#include "table/slot_reader_generic_table.h"
#include "table/walk_errors.h"
#include "table/walk_limits.h"

namespace Quask {

// The checks that make a walk right while writers change the table under it. A test may leave one
// out to see that it is needed; nothing else does.
struct AllWalkChecks
{
    static constexpr bool linkVersion = true;  // a followed link is looked at again
    static constexpr bool sequence = true;     // a value's state word is looked at again
    static constexpr bool lookaside = true;    // a value being rewritten is taken from elsewhere
    static constexpr bool growth = true;       // slots that a writer has published are mapped
    using Batch = AllBatchChecks;
};

// One optimistic walk over bucket chains. Never locks, never writes to the table. It rests on these
// invariants:
//
// 1. A link is read with one atomic load, so that its version and its index belong together.
// 2. A value is accepted only when the slot's sequence word is the same before and after the copy.
//    While the word's lookaside bit is set, the value is the one in the lookaside slot.
// 3. A slot is handed out only after the version of the link that led to it was found unchanged,
//    and that after its value and its next link were read. An unchanged version says that at this
//    moment the slot was still where the link led, so the next link continues this very chain.
// 4. A changed link makes the whole chain be walked again from its head, never only its tail, and
//    the handler forget it: what a handler sees as finished is one walk from the head to the end.
//
// A finished chain is not a snapshot: its elements were each in the chain at the moment when they
// were read, one after the other. An element that no writer touches is in it exactly once.
//
// For a handler that takes batches most chains are walked by ChainBatch, many at once, to the same
// result; this walk is what it is measured by, and what remains where anything is out of the
// ordinary.
//
// Nothing is allocated. With a batch the object has about 100 KiB. One thread.
template <typename Handler, typename Checks = AllWalkChecks>
class ChainWalk
{
public:
    // All are used, none is owned. The tables must be set up, the handler's buffer in place.
    ChainWalk(Dovan::Platform::DebugHandler& debugHandler, BucketReaderTable& bucketTable,
              SlotReaderGenericTable& slotTable, ReaderStatistics& readerStatistics,
              std::uint32_t& chainRestarts, Handler& scanHandler)
        : debugHandler_(debugHandler),
          buckets_(bucketTable),
          slots_(slotTable),
          statistics_(readerStatistics),
          chainRestarts_(chainRestarts),
          handler_(scanHandler),
          layout_(slotTable.layout(scanHandler.size)),
          prefetch_(bucketTable, layout_, scanHandler.size),
          limits_(slotTable, scanHandler.size),
          batch_(bucketTable, slotTable, scanHandler.size)
    {}

    // Walks buckets from `first` on until the handler says stop. With `byPosition` `count` buckets,
    // cut to those there are; without it until `count` buckets with elements were read (one that is
    // walked again counts again). Walking downward, a `count` that equals `first` means one more.
    //
    // There is no limit on restarts: a chain that changes all the time keeps the walk busy. A chain
    // that is longer than one whose links do not change can be has changed, too.
    //
    // Throws CorruptionDetectedException when a bucket or slot lies outside the table, when a chain
    // runs in a circle that no writer is rearranging or through overlapping values that are more
    // than the file can hold, or when the chains hold far more elements than there are slots; and
    // what the growth step throws.
    void run(unsigned first, unsigned count, Direction direction, bool byPosition)
    {
        unsigned const step = direction == Direction::upward ? 1u : ~0u;
        count = boundedCount(first, count, direction);
        unsigned const end = byPosition ? first + count : buckets_.bucketCount();
        unsigned visited = 0;  // buckets with elements; means nothing with `byPosition`
        bool const inBatches = byPosition && direction == Direction::upward;
        unsigned index = first;
        while (index < end && (byPosition || visited < count)) {
            prefetch_.advance(index);
            if constexpr (BatchHandler<Handler>) {
                if (inBatches && readBatch(index, end)) {
                    if (!handler_.handleBatch(batch_)) {
                        return;
                    }
                    index += batch_.bucketCount();
                    continue;
                }
            }
            SlotRef const* const bucket = &buckets_.getRef(index);
            SlotRef link = loadLink(bucket);
            visited += link.isNull() ? 0 : 1;
            switch (walkChain(index, bucket, link)) {
                case ChainEnd::reached:
                    if (!handler_.done(index, link)) {
                        return;
                    }
                    index += step;
                    break;
                case ChainEnd::changed:
                    ++chainRestarts_;
                    handler_.restart(index);
                    break;
                case ChainEnd::stopped:
                    return;
            }
        }
    }

private:
    enum class ChainEnd
    {
        reached,
        changed,
        stopped
    };

    // What was read of one slot, but for the value.
    struct Reading
    {
        SlotRef next;
        void const* nextAddress;
        std::uint32_t sequence;
        bool lookaside;
    };

    // In place of the batch, for a handler that does not take batches.
    struct NoBatch
    {
        NoBatch(BucketReaderTable const& /*buckets*/, SlotReaderGenericTable const& /*slots*/,
                unsigned /*valueSize*/)
        {}
    };

    // `count`, without those buckets that are not there.
    unsigned boundedCount(unsigned first, unsigned count, Direction direction) const
    {
        if (direction != Direction::upward) {
            return count == first ? first + 1 : count;
        }
        unsigned const bucketCount = buckets_.bucketCount();
        return first + count >= bucketCount ? bucketCount - first : count;
    }

    // Reads buckets from `index` on, before `end`, as a batch. False when they are to be walked one
    // by one, also to find out in which of them there is an element too many. Batches begin where
    // the prefetch begins one, so that it is asked at each.
    bool readBatch(unsigned index, unsigned end)
    {
        static_assert(ChainPrefetch::batchSizeFor(ChainBatch::largestValue) == ChainBatch::width);
        unsigned const there = std::min(end, buckets_.readableBuckets());
        if (index >= there) {
            return false;
        }
        unsigned const count =
            std::min(there - index, ChainBatch::width - index % ChainBatch::width);
        if (!batch_.template read<typename Checks::Batch>(layout_, index, count) ||
            elements_ + batch_.size() > limits_.elements) {
            return false;
        }
        elements_ += batch_.size();
        return true;
    }

    // Walks one chain from `link`, which lies at `bucket`. `link` is the null link that ended the
    // chain, when that was reached.
    [[gnu::always_inline]] ChainEnd walkChain(unsigned index, void const* bucket, SlotRef& link)
    {
        void const* linkAddress = bucket;
        std::uint32_t linkOwner = SlotRef::null;  // slot in which `link` lies; null: the bucket
        ChainCycle cycle(limits_.chainSlots);
        while (!link.isNull()) {
            Reading slot{};
            bool const found = readSlot(link.index, slot);
            if (Checks::growth && slots_.doResize()) [[unlikely]] {
                useNewMapping();
                linkAddress = linkOwner == SlotRef::null ? bucket : nextLinkOf(linkOwner);
                if (linkAddress == nullptr) {
                    return ChainEnd::changed;
                }
                continue;
            }
            if (!found) [[unlikely]] {
                throwOutsideSlots(debugHandler_, slots_, link.index);
            }
            if (Checks::linkVersion && !isUnchanged(linkAddress, link)) [[unlikely]] {
                return ChainEnd::changed;
            }
            if (!handler_.handleSlot(index, link, handler_.data, handler_.size, slot.lookaside,
                                     slot.sequence)) {
                return ChainEnd::stopped;
            }
            // A chain that ends here is neither circle nor too long. Asked just before the loop's
            // own look at the next link, so that both are one branch: after handleSlot() instead of
            // before it, a scan takes 6 % to 9 % less time. The slot that closes a circle has been
            // handed out twice by then; the chain is never finished.
            if (!slot.next.isNull() && !mayGoOn(cycle, index, link.index, slot.next)) [[unlikely]] {
                return ChainEnd::changed;
            }
            linkOwner = link.index;
            linkAddress = slot.nextAddress;
            link = slot.next;
        }
        count(index, linkOwner == SlotRef::null ? 0 : cycle.steps() + 1);
        return ChainEnd::reached;
    }

    // Whether the chain of `bucket` can be as it seems, going on after the slot `index` by its link
    // `next`; false when it was rewritten during the walk.
    [[gnu::always_inline]] bool mayGoOn(ChainCycle& cycle, unsigned bucket, std::uint32_t index,
                                        SlotRef const& next)
    {
        ChainCycle::Verdict const verdict = cycle.follow(index, next);
        if (verdict == ChainCycle::Verdict::circle) [[unlikely]] {
            throwCycle(debugHandler_, bucket, index);
        }
        if (cycle.steps() > limits_.overlappingSteps) [[unlikely]] {
            throwOverlap(debugHandler_, bucket, layout_.slotSize, handler_.size);
        }
        return verdict == ChainCycle::Verdict::goesOn;
    }

    // The chain of `bucket`, walked to its end, held so many elements.
    [[gnu::always_inline]] void count(unsigned bucket, std::uint64_t elements)
    {
        elements_ += elements;
        if (elements_ > limits_.elements) [[unlikely]] {
            throwTooManyElements(debugHandler_, bucket, elements_, slots_.slotCount());
        }
    }

    // Where the next link of a slot that was read lies now; null when a re-map has left it outside.
    void const* nextLinkOf(std::uint32_t index) const
    {
        unsigned char const* const slot = slots_.slotAt(index, 0);
        return slot == nullptr ? nullptr : slot + SlotReaderGenericTable::nextOffset;
    }

    // The slot file has been mapped again: what was taken from the former mapping is invalid.
    void useNewMapping()
    {
        layout_ = slots_.layout(handler_.size);
        limits_ = WalkLimits(slots_, handler_.size);
        prefetch_.restart(layout_);
    }

    // Reads the slot, its value into the handler's buffer. False, and nothing read, when it lies
    // outside the table.
    [[gnu::always_inline]] bool readSlot(std::uint32_t index, Reading& reading)
    {
        unsigned const length = std::min(slots_.liveValueSize(), handler_.size);
        if (index < layout_.reachable) [[likely]] {
            reading = readFound(Mem::Atomics::knownAligned(layout_.slot(index)), length);
            return true;
        }
        // It may still be inside: with a value that is shorter than the handler's buffer, or where
        // slots are not aligned.
        unsigned char const* const slot =
            index <= slots_.maximumIndex() ? slots_.slotAt(index, length) : nullptr;
        if (slot == nullptr) {
            return false;
        }
        reading = readFound(slot, length);
        return true;
    }

    [[gnu::always_inline]] Reading readFound(unsigned char const* slot, unsigned length)
    {
        unsigned char const* const next = slot + SlotReaderGenericTable::nextOffset;
        unsigned char const* const word = slot + SlotReaderGenericTable::sequenceOffset;
        // acquire: pairs with the writer's release store of the word, so that the value is at least
        // as new as the word says; with the lookaside bit, that the lookaside slot holds the value.
        std::uint32_t sequence = Mem::Atomics::load32(word, std::memory_order_acquire);
        for (;;) {
            bool const lookaside =
                Checks::lookaside && (sequence & Slot<EmptyValue>::LOOKASIDE) != 0;
            if (lookaside) [[unlikely]] {
                ++statistics_.lookasideHits;
                Mem::Atomics::copy(handler_.data, slots_.lookasideValue(), length);
            } else {
                Mem::Atomics::copy(handler_.data, slot + SlotReaderGenericTable::valueOffset,
                                   length);
            }
            // The fence keeps the copy before the second look at the word: bytes of a later value
            // bring the word that the writer had stored before them. acquire for the next round.
            Mem::Atomics::fenceAcquire();
            std::uint32_t const again = Mem::Atomics::load32(word, std::memory_order_acquire);
            if (again == sequence || !Checks::sequence) [[likely]] {
                return {loadLink(next), next, sequence, lookaside};
            }
            sequence = again;
        }
    }

    Dovan::Platform::DebugHandler& debugHandler_;
    BucketReaderTable& buckets_;
    SlotReaderGenericTable& slots_;
    ReaderStatistics& statistics_;
    std::uint32_t& chainRestarts_;
    Handler& handler_;
    SlotLayout layout_;  // of the current mapping
    ChainPrefetch prefetch_;
    WalkLimits limits_;           // of the current mapping
    std::uint64_t elements_ = 0;  // in the chains that were walked to their ends
    std::conditional_t<BatchHandler<Handler>, ChainBatch, NoBatch> batch_;
};

}  // namespace Quask
