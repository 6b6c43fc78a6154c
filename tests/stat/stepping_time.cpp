// The clock of the program under test: how quick the machine is decides nothing.

#include <csignal>
#include <cstdlib>

#include "stat/walk_progress.h"

// An eighth of a second passes between any two looks at it, however long that took. With
// QUASK_TEST_STOP in the environment the process stops at the second look, in the middle of a walk
// that shows its progress.
Quask::Stat::WalkProgress::Clock::time_point Quask::Stat::progressTime()
{
    static WalkProgress::Clock::time_point time;
    static int looks = 0;
    if (++looks == 2 && std::getenv("QUASK_TEST_STOP") != nullptr) {
        static_cast<void>(std::raise(SIGSTOP));
    }
    return time += std::chrono::milliseconds(125);
}
