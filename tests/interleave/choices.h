#pragma once

#include <cstddef>
#include <vector>

#include "interleave/moments.h"

namespace QuaskTesting {

// Takes a row of executions through all ways in which they can go, where what has been chosen so
// far decides which choices there are: a search, depth first, that begins again for each way.
class Choices
{
public:
    // The present execution chooses one of these moments. Its next choices depend on it.
    Moment take(Moments alternatives)
    {
        if (std::has_single_bit(alternatives)) {
            return earliest(alternatives);
        }
        if (taken_ == left_.size()) {
            left_.push_back(alternatives);
        }
        return earliest(left_[taken_++]);
    }

    // Goes on to the execution that chooses what none before it has; false when there is none.
    bool advance()
    {
        taken_ = 0;
        while (!left_.empty()) {
            left_.back() &= left_.back() - 1;
            if (left_.back() != 0) {
                return true;
            }
            left_.pop_back();
        }
        return false;
    }

private:
    // Of each choice on the present way, the one taken, which is the earliest, and those still to
    // be taken.
    std::vector<Moments> left_;
    std::size_t taken_ = 0;  // choices that the present execution has made
};

}  // namespace QuaskTesting
