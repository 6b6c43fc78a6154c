#pragma once

#include <cstdint>

#include "stat/chain_statistics.h"
#include "stat/walk_progress.h"
#include "table/scan_handler.h"

namespace Quask::Stat {

// The handler of a walk that counts the elements of each chain and copies no values. A chain that
// had to be walked again is counted as it was the last time. One thread.
class ChainCounter final : public ScanHandler
{
public:
    // Counts into `chains`, and shows `progress` every few thousand buckets. Both must outlive the
    // object.
    ChainCounter(ChainStatistics& chains, WalkProgress& progress)
        : chains_(chains), progress_(progress)
    {}

    // All three always true.
    bool handleSlot(unsigned /*bucket*/, SlotRef const& /*ref*/, unsigned char* /*valueBytes*/,
                    unsigned /*length*/, bool /*lookaside*/, unsigned /*sequence*/) override
    {
        ++length_;
        return true;
    }

    bool done(unsigned bucket, SlotRef const& /*ref*/) override
    {
        constexpr std::uint64_t progressStep = 4096;
        chains_.add(length_, bucket);
        length_ = 0;
        if (chains_.buckets() % progressStep == 0) {
            progress_.show(static_cast<unsigned>(chains_.buckets()));
        }
        return true;
    }

    bool restart(unsigned /*bucket*/) override
    {
        length_ = 0;
        return true;
    }

private:
    ChainStatistics& chains_;
    WalkProgress& progress_;
    std::uint64_t length_ = 0;  // of the chain so far
};

}  // namespace Quask::Stat
