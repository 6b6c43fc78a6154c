#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "interleave/scheduled_memory.h"
#include "table/chain_batch.h"
#include "table/scan_handler.h"

namespace QuaskTesting {

// An element of a finished chain as the walk handed it out. Loads are numbered as ScheduledMemory
// counts them.
struct WalkedElement
{
    std::uint32_t slot;
    std::string value;
    std::size_t firstLoad;  // of the reading of this slot; may include the load of the chain's head
    std::size_t lastLoad;   // the second look at the link that led to it
};

struct WalkedChain
{
    std::uint32_t bucket;
    std::size_t firstLoad;  // since the chain was begun for the last time
    std::size_t lastLoad;
    std::vector<WalkedElement> elements;
};

// Keeps what a walk over scheduled memory hands out.
class WalkRecorder : public Quask::ScanHandler
{
public:
    WalkRecorder(ScheduledMemory const& memory, unsigned valueSize);

    bool done(unsigned bucket, Quask::SlotRef const& ref) override;
    bool handleSlot(unsigned bucket, Quask::SlotRef const& ref, unsigned char* valueBytes,
                    unsigned length, bool lookaside, unsigned sequence) override;
    bool restart(unsigned bucket) override;

    std::vector<WalkedChain> const& chains() const { return chains_; }

protected:
    // The number of the last load of the link that begins the chain.
    std::size_t loadOfHead(unsigned bucket) const;

    ScheduledMemory const& memory_;
    std::vector<WalkedChain> chains_;

private:
    std::string buffer_;
    std::vector<WalkedElement> elements_;  // of the chain that is being walked
    std::size_t slotStart_ = 0;            // the number of the first load of the slot being read
};

// The same of a walk in batches.
class BatchRecorder final : public WalkRecorder
{
public:
    using WalkRecorder::WalkRecorder;

    bool handleBatch(Quask::ChainBatch const& batch);

    unsigned batches() const { return batches_; }

private:
    // With the loads by which it was read. `link` is the place of the link that led to it.
    WalkedElement readBy(Quask::BatchElement const& element, Place const& link) const;

    unsigned batches_ = 0;
};

// Whether a walk that has ended found what it promises, in all schedules that its execution stands
// for; if not, what is wrong.
//
// - Every bucket is finished once, in order.
// - Every element that was handed out was, at a moment during the reading of its slot, in this slot
//   of this bucket's chain with this value: the value is whole, of the right age, and in no foreign
//   bucket.
// - No element is twice in a chain, and one that is in the bucket all the time while its chain is
//   walked is there exactly once. In particular one that is never touched.
std::string violationIn(ScheduledMemory const& memory, std::vector<WalkedChain> const& chains,
                        std::uint32_t bucketCount);

}  // namespace QuaskTesting
