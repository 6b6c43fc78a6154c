#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace Dovan {

struct FreeBytes
{
    void operator()(unsigned char* bytes) const { std::free(bytes); }
};

// Bytes that are all 0 at first. A large number of them takes memory only where it is written to.
using ZeroedBytes = std::unique_ptr<unsigned char[], FreeBytes>;

// At least one. Null when there is no memory.
inline ZeroedBytes allocateZeroed(std::size_t count)
{
    return ZeroedBytes(static_cast<unsigned char*>(std::calloc(count == 0 ? 1 : count, 1)));
}

}  // namespace Dovan
