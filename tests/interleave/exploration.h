#pragma once

#include <cstdint>
#include <string>

#include "interleave/scheduled_memory.h"

namespace QuaskTesting {

// What a search through all schedules has come to.
struct Exploration
{
    BigCount schedules = 0;        // covered; 0 where they are not counted
    std::uint64_t executions = 0;  // run for them
    std::string violation;         // the first one, which ends the search, and how it came about

    // What walks met in these executions.
    std::uint64_t restarts = 0;
    std::uint64_t lookasideHits = 0;
    std::uint64_t remaps = 0;
    std::uint64_t movedRemaps = 0;
    std::uint64_t batches = 0;  // that were good

    // Adds the figures; keeps the violation that came first.
    Exploration& operator+=(Exploration const& other);
};

// Runs `execution` for all that `memory` can do. It adds to the figures that it is given, and
// returns what was wrong, or nothing.
template <typename Execution>
Exploration explore(ScheduledMemory& memory, Execution&& execution)
{
    Exploration result;
    do {
        memory.begin();
        result.violation = execution(result);
        ++result.executions;
        result.schedules += memory.schedules();
    } while (result.violation.empty() && memory.advance());
    if (!result.violation.empty()) {
        result.violation += "\n" + memory.describe();
    }
    return result;
}

// Prints the figures and records them as properties of the running test.
void report(Exploration const& result);

}  // namespace QuaskTesting
