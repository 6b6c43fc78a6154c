#include "stat/walk_progress.h"

namespace Quask::Stat {

// Alone in its file, so that a test program can have a clock of its own in its place.
WalkProgress::Clock::time_point progressTime()
{
    return WalkProgress::Clock::now();
}

}  // namespace Quask::Stat
