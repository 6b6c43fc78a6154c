#include "interleave/exploration.h"

#include <gtest/gtest.h>

#include <iostream>

namespace QuaskTesting {

Exploration& Exploration::operator+=(Exploration const& other)
{
    schedules += other.schedules;
    executions += other.executions;
    violation = violation.empty() ? other.violation : violation;
    restarts += other.restarts;
    lookasideHits += other.lookasideHits;
    remaps += other.remaps;
    movedRemaps += other.movedRemaps;
    batches += other.batches;
    return *this;
}

void report(Exploration const& result)
{
    if (result.schedules != 0) {
        std::cout << decimal(result.schedules) << " schedules covered by ";
        testing::Test::RecordProperty("schedules", decimal(result.schedules));
    }
    std::cout << result.executions << " executions; chains restarted: " << result.restarts
              << ", lookaside hits: " << result.lookasideHits << ", re-maps: " << result.remaps
              << ", moved: " << result.movedRemaps << ", batches: " << result.batches << std::endl;
    testing::Test::RecordProperty("executions", std::to_string(result.executions));
}

}  // namespace QuaskTesting
