#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "interleave/scheduled_memory.h"
#include "table/scan_handler.h"

namespace QuaskTesting {

// An element of a finished chain as the walk handed it out. Loads are numbered as ScheduledMemory
// counts them.
struct WalkedElement
{
    std::uint32_t slot;
    std::string value;
    std::size_t firstLoad;  // of the reading of this slot; the load of the chain's head included
    std::size_t lastLoad;   // the one after which the walk handed it out
};

struct WalkedChain
{
    std::uint32_t bucket;
    std::size_t firstLoad;  // since the chain was begun for the last time
    std::size_t lastLoad;
    std::vector<WalkedElement> elements;
};

// Keeps what a walk over scheduled memory hands out.
class WalkRecorder final : public Quask::ScanHandler
{
public:
    WalkRecorder(ScheduledMemory const& memory, unsigned valueSize);

    bool done(unsigned bucket, Quask::SlotRef const& ref) override;
    bool handleSlot(unsigned bucket, Quask::SlotRef const& ref, unsigned char* valueBytes,
                    unsigned length, bool lookaside, unsigned sequence) override;
    bool restart(unsigned bucket) override;

    std::vector<WalkedChain> const& chains() const { return chains_; }

private:
    ScheduledMemory const& memory_;
    std::string buffer_;
    std::vector<WalkedChain> chains_;
    std::vector<WalkedElement> elements_;  // of the chain that is being walked
    std::size_t chainStart_ = 0;           // the number of its first load
    std::size_t slotStart_ = 0;            // the number of the first load of the slot being read
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
