#pragma once

#include <chrono>

namespace QuaskTesting {

// Begins before the tool is sent a signal. What the tool has a second for is promised as long as
// this lasts; a machine that is busier keeps no such promise.
class Patience
{
public:
    bool lasts() const
    {
        return std::chrono::steady_clock::now() - start_ < std::chrono::seconds(1);
    }

private:
    std::chrono::steady_clock::time_point const start_ = std::chrono::steady_clock::now();
};

}  // namespace QuaskTesting
