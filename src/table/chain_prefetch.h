#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "mem/atomics.h"
#include "support/watched_mapping.h"
#include "table/bucket_reader_table.h"
#include "table/slot_reader_generic_table.h"

namespace Quask {

// Runs ahead of an upward walk and asks the processor for the slots that it will need, so that the
// walk finds them in the cache instead of waiting for memory at every link. A hint, nothing more:
// it looks at links of any age, decides nothing, and touches only mapped pages.
//
// It works by batches of buckets, in stages. When the walk begins a batch, the head slots of the
// batch some way ahead are asked for; of the one before that, whose head slots have arrived by
// then, the slots after them; and so on. The end of a chain longer than the stages is left to the
// walk.
class ChainPrefetch
{
public:
    // Buckets of a batch, a power of two. Found by measurement, like the stages: a batch gives the
    // memory the time to answer. With large values, which fill the caches sooner, fewer are better.
    static constexpr unsigned batchSizeFor(unsigned valueBytes)
    {
        return valueBytes <= 256 ? largestBatch : 16;
    }

    // `buckets` must be set up; it is used, not owned. `bytes` bytes of each value matter.
    ChainPrefetch(BucketReaderTable const& buckets, SlotLayout const& layout, unsigned bytes)
        : buckets_(buckets),
          batchSize_(batchSizeFor(bytes)),
          lastByte_(std::min<std::size_t>(SlotReaderGenericTable::valueOffset + bytes, 128) - 1)
    {
        restart(layout);
    }

    // The slots are mapped elsewhere now: what was looked up before is not valid any more.
    void restart(SlotLayout const& layout)
    {
        layout_ = layout;
        for (Batch& batch : stages_) {
            batch.count = 0;
        }
    }

    // The walk is about to visit bucket `index`, and has visited those before it in order.
    void advance(unsigned index)
    {
        if ((index & (batchSize_ - 1)) != 0) {
            return;
        }
        // A page that cannot be read is not to end the run before its turn has come.
        Mem::ZerosForNow const zerosForNow;
        for (std::size_t stage = stages_.size() - 1; stage > 0; --stage) {
            requestNext(stages_[stage - 1], stages_[stage]);
        }
        requestHeads(std::uint64_t{index} + batchSize_ * stages_.size(), stages_[0]);
    }

private:
    // Four stages reach all but one in a thousand elements where there are as many buckets as
    // slots.
    static constexpr std::size_t stageCount = 4;

    static constexpr unsigned largestBatch = 64;

    // The slots of one batch that were asked for last.
    struct Batch
    {
        // Asks for the slots that the `linkCount` links lead to and keeps those there are;
        // `linkAt` gives the address of each. Without a branch: whether a chain goes on is a matter
        // of chance, and a wrong guess costs more than the rest.
        template <typename LinkAt>
        void request(SlotLayout const layout, std::size_t lastByte, std::size_t linkCount,
                     LinkAt linkAt)
        {
            std::size_t found = 0;
            for (std::size_t i = 0; i < linkCount; ++i) {
                SlotRef const link = slotRef(Mem::Atomics::peek64(linkAt(i)));
                unsigned char const* const slot =
                    layout.slot(std::min(link.index, layout.reachable));
                __builtin_prefetch(slot);
                __builtin_prefetch(slot + lastByte);
                slots[found] = slot;
                found += link.index < layout.reachable ? 1 : 0;
            }
            count = found;
        }

        std::array<unsigned char const*, largestBatch + 1> slots;
        std::size_t count;
    };

    void requestHeads(std::uint64_t first, Batch& heads)
    {
        heads.count = 0;
        std::uint64_t const there = buckets_.readableBuckets();
        if (first >= there) {
            return;
        }
        SlotRef const* const links = &buckets_.getRef(static_cast<unsigned>(first));
        heads.request(layout_, lastByte_, std::min<std::uint64_t>(batchSize_, there - first),
                      [links](std::size_t i) { return links + i; });
    }

    void requestNext(Batch const& arrived, Batch& next)
    {
        next.request(layout_, lastByte_, arrived.count, [&arrived](std::size_t i) {
            return Mem::Atomics::knownAligned(arrived.slots[i]);
        });
    }

    BucketReaderTable const& buckets_;
    unsigned const batchSize_;
    std::size_t const lastByte_;
    SlotLayout layout_;
    std::array<Batch, stageCount> stages_;
};

}  // namespace Quask
