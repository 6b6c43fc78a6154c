#pragma once

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

// Whether `attempt(patience)` returns true. When it does not and took too long, that shows nothing,
// and it is made again, until the machine is quick enough for once.
template <typename Attempt>
bool succeedsInTime(Attempt attempt)
{
    for (;;) {
        Patience patience;
        if (attempt(patience)) {
            return true;
        }
        if (patience.lasts()) {
            return false;
        }
    }
}

}  // namespace QuaskTesting
