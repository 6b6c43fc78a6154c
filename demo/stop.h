#pragma once

#include <chrono>

#include <poll.h>

namespace Demo {

using Clock = std::chrono::steady_clock;

// Whether a demonstration is to stop: at SIGINT, SIGTERM or SIGHUP, which no longer end the process
// by themselves, or when its standard input, a pipe or a terminal, ends.
// One object per process, made before any thread.
class Stop
{
public:
    Stop();

    // Waits until `time`, or until there is reason to stop; whether there is.
    bool comesBefore(Clock::time_point time);

private:
    bool inputEnded();

    pollfd watched_[2];  // the signals, the standard input
};

}  // namespace Demo
