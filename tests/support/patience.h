#pragma once

#include <gtest/gtest.h>

#include <chrono>

namespace QuaskTesting {

// How long a test waits for what the tool has a second for after a signal. A machine that is too
// busy does not get it done in that time.
class Patience
{
public:
    // The signal is about to be sent.
    void begin() { start_ = std::chrono::steady_clock::now(); }

    bool lasts() const
    {
        return std::chrono::steady_clock::now() - start_ < std::chrono::seconds(1);
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Whether `attempt(patience)` returns true. When it does not and took too long, it shows nothing,
// and is made again; on a machine that is too busy for a minute the test is skipped.
template <typename Attempt>
bool succeedsInTime(Attempt attempt)
{
    auto const giveUp = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (std::chrono::steady_clock::now() < giveUp) {
        Patience patience;
        if (attempt(patience)) {
            return true;
        }
        if (patience.lasts()) {
            return false;
        }
    }
    [] { GTEST_SKIP() << "the machine needs longer than a signal waits"; }();
    return true;
}

}  // namespace QuaskTesting
