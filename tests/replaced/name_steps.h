#pragma once

#include <functional>

namespace QuaskTesting {

// While it lives, `action` is carried out before each use that a reader makes of a table file's
// name, with the number of the use, from 1 on: looking at the file's size, opening it, and looking
// whether the name still leads to it. In a program that is built with QUASK_INTERLEAVE. One at a
// time.
class NameSteps
{
public:
    explicit NameSteps(std::function<void(unsigned step)> action);
    NameSteps(NameSteps const&) = delete;
    NameSteps& operator=(NameSteps const&) = delete;
    ~NameSteps();

    // The number of steps up to now.
    unsigned count() const { return count_; }

    void beforeStep() { action_(++count_); }

private:
    std::function<void(unsigned step)> action_;
    unsigned count_ = 0;
};

}  // namespace QuaskTesting
