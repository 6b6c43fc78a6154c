#pragma once

#include <cstddef>
#include <list>
#include <stdexcept>

#include <sys/mman.h>
#include <unistd.h>

#include "support/pipe.h"

namespace QuaskTesting {

// Puts a mapping between two pages that cannot be read, so that a load outside it ends the process.
// The pages stay as long as the object. One thread.
class GuardPages
{
public:
    // `map()` maps `bytes` bytes and returns their address, or null; `unmap()` takes that back.
    // Both are called until there is such a page before the first and after the last page of them.
    template <typename Unmap, typename Map>
    GuardPages(std::size_t bytes, Unmap unmap, Map map)
    {
        std::size_t const size = (bytes + pageSize_ - 1) / pageSize_ * pageSize_;
        for (int attempts = 0; attempts < 1000; ++attempts) {
            unmap();
            // Takes the place that was not good enough. What is mapped next and is as long goes
            // just before it, as soon as there is no smaller gap.
            taken_.emplace_back(nullptr, size);
            auto const* const begin = static_cast<char const*>(map());
            if (begin != nullptr && isGuarded(begin - pageSize_) && isGuarded(begin + size)) {
                return;
            }
        }
        throw std::runtime_error("no mapping between inaccessible pages");
    }

private:
    struct Inaccessible
    {
        Inaccessible(void* place, std::size_t bytes)
            : address(
                  mmap(place, bytes, PROT_NONE,
                       MAP_PRIVATE | MAP_ANONYMOUS | (place != nullptr ? MAP_FIXED_NOREPLACE : 0),
                       -1, 0)),
              size(bytes)
        {}
        Inaccessible(Inaccessible const&) = delete;
        Inaccessible& operator=(Inaccessible const&) = delete;
        ~Inaccessible()
        {
            if (address != MAP_FAILED) {
                munmap(address, size);
            }
        }

        void* address;
        std::size_t size;
    };

    // Whether the page cannot be read, nor ever will be: a free place is taken.
    bool isGuarded(char const* page)
    {
        taken_.emplace_back(const_cast<char*>(page), pageSize_);
        Pipe const pipe;
        return write(pipe.writeEnd(), page, 1) < 0;
    }

    std::size_t const pageSize_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::list<Inaccessible> taken_;
};

}  // namespace QuaskTesting
