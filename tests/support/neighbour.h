#pragma once

#include <sys/mman.h>
#include <unistd.h>

namespace QuaskTesting {

// While it lives, the page after a mapping is taken, so that the mapping cannot grow where it is.
class Neighbour
{
public:
    // `end` is the first address after the mapping's last page.
    explicit Neighbour(void const* end)
        : address_(mmap(const_cast<void*>(end), 1, PROT_NONE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0))
    {}
    Neighbour(Neighbour const&) = delete;
    Neighbour& operator=(Neighbour const&) = delete;
    ~Neighbour()
    {
        if (address_ != MAP_FAILED) {  // else something else is there already
            munmap(address_, 1);
        }
    }

private:
    void* address_;
};

}  // namespace QuaskTesting
