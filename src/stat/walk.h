#pragma once

#include <cstdint>
#include <optional>

#include "stat/chain_statistics.h"
#include "stat/table_look.h"

namespace Quask::Stat {

// What it means that a walk finds another number of elements than the header counts.
enum class Difference
{
    none,        // it does not
    normal,      // a writer may have inserted and removed elements at the same time
    writerDied,  // in the middle of a change; the next writer counts again
};

// What one walk over the chains of a table has found.
struct Walk
{
    ChainStatistics chains;
    std::uint32_t countedBefore = 0;  // elements, by the header, when the walk began
    std::uint32_t countedAfter = 0;   // likewise when it had ended
    Difference difference = Difference::none;
    std::uint32_t restarts = 0;       // chains that were walked again
    std::uint32_t lookasideHits = 0;  // values that were being rewritten
};

// Walks over the chains of the table that was looked at, and shows on standard error, if that is a
// terminal, how far it has come. Nothing, with the reason on standard error, when the chains cannot
// be walked to their end, or the table is not the same any more.
std::optional<Walk> walkTable(TableLook const& table);

}  // namespace Quask::Stat
