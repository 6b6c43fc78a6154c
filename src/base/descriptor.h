#pragma once

#include <utility>

#include <unistd.h>

namespace Dovan {

// Owns an open file descriptor, or none, and closes it at the end. Moved, not copied. One thread.
class Descriptor
{
public:
    Descriptor() = default;

    // Takes over `number`, as a system call gave it: -1 is none.
    explicit Descriptor(int number) : number_(number) {}

    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }

    // Leaves errno as it is, so that an earlier failure can still be reported.
    ~Descriptor()
    {
        if (isOpen()) {
            ::close(number_);
        }
    }

    bool isOpen() const { return number_ >= 0; }

    // Valid as long as this object; -1 for none.
    int number() const { return number_; }

    // Leaves the descriptor to the caller, who closes it.
    int release() { return std::exchange(number_, -1); }

private:
    int number_ = -1;
};

}  // namespace Dovan
