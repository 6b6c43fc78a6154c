#pragma once

#include <functional>

namespace QuaskTesting {

// While it lives, `action` is carried out before every load from shared memory, with the
// number of the load, from 1 on. In a program that is built with QUASK_INTERLEAVE. One at a time.
class LoadByLoad
{
public:
    explicit LoadByLoad(std::function<void(unsigned load)> action);
    LoadByLoad(LoadByLoad const&) = delete;
    LoadByLoad& operator=(LoadByLoad const&) = delete;
    ~LoadByLoad();

    // The number of loads up to now.
    unsigned count() const { return count_; }

    void beforeLoad() { action_(++count_); }

private:
    std::function<void(unsigned load)> action_;
    unsigned count_ = 0;
};

// For LoadByLoad: an action before one load only.
template <typename Action>
std::function<void(unsigned load)> atLoad(unsigned when, Action action)
{
    return [when, action](unsigned load) {
        if (load == when) {
            action();
        }
    };
}

}  // namespace QuaskTesting
