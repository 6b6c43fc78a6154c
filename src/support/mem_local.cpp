#include "support/mem_local.h"

#include <sys/mman.h>
#include <unistd.h>

namespace Mem {

std::size_t const pageSize_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

std::size_t roundUpToPages(std::size_t size)
{
    return (size + pageSize_ - 1) & ~(pageSize_ - 1);
}

Local::~Local()
{
    if (!detached) {
        detach();
    }
}

void* Local::map(unsigned bytes, int protection, int descriptor)
{
    if (address != nullptr || bytes == 0) {
        return nullptr;
    }
    int const flags = descriptor < 0 ? MAP_PRIVATE | MAP_ANONYMOUS : MAP_SHARED;
    void* const mapped = mmap(nullptr, bytes, protection, flags, descriptor, 0);
    if (mapped == MAP_FAILED) {
        return nullptr;
    }
    address = mapped;
    size = bytes;
    detached = false;
    return address;
}

void* Local::attach(unsigned bytes, Mode mode)
{
    return map(bytes, mode == Mode::read ? PROT_READ : PROT_READ | PROT_WRITE, -1);
}

void* Local::resize(unsigned bytes)
{
    if (address == nullptr || bytes == 0) {
        return nullptr;
    }
    void* const moved = mremap(address, size, bytes, MREMAP_MAYMOVE);
    if (moved == MAP_FAILED) {
        return nullptr;
    }
    address = moved;
    size = bytes;
    return address;
}

int Local::detach()
{
    detached = true;
    if (address == nullptr) {
        return 0;
    }
    int const result = munmap(address, size);
    address = nullptr;
    size = 0;
    return result;
}

}  // namespace Mem
