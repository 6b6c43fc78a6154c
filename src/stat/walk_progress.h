#pragma once

#include <chrono>
#include <functional>
#include <ostream>

namespace Quask::Stat {

// What the progress of walks is measured by, if nothing else is asked for: the time of the steady
// clock.
std::chrono::steady_clock::time_point progressTime();

// Says on a terminal how far a long walk has come: from a second after its start on, in one line
// that is written over again and again, and is gone at the end. One thread.
class WalkProgress
{
public:
    using Clock = std::chrono::steady_clock;

    // `out` is where to say it, null for nowhere; `now` gives the time.
    WalkProgress(std::ostream* out, unsigned buckets,
                 std::function<Clock::time_point()> now = &progressTime);
    WalkProgress(WalkProgress const&) = delete;
    WalkProgress& operator=(WalkProgress const&) = delete;

    // Clears the line.
    ~WalkProgress();

    void show(unsigned bucketsDone);

private:
    std::ostream* const out_;
    unsigned const buckets_;
    std::function<Clock::time_point()> const now_;
    Clock::time_point const start_;
    Clock::time_point next_;
    bool isShown_ = false;
};

}  // namespace Quask::Stat
