#pragma once

#include <cstdint>

namespace Quask {

// What one reader of a table has met since it was set up.
struct ReaderStatistics
{
    std::uint32_t lookasideHits =
        0;                     // values copied from the lookaside slot, repeated copies included
    std::uint32_t remaps = 0;  // growth steps that mapped the slot file again
    std::uint32_t movedRemaps = 0;  // those of them that moved the mapping
};

}  // namespace Quask
