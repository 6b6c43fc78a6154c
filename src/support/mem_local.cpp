#include "support/mem_local.h"

#include <cerrno>
#include <cstring>
#include <utility>

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

void* Local::map(unsigned bytes, int protection, RegularFile mappedFile)
{
    if (address != nullptr || bytes == 0) {
        return nullptr;
    }
    int const flags = mappedFile.isOpen() ? MAP_SHARED : MAP_PRIVATE | MAP_ANONYMOUS;
    void* const mapped = mmap(nullptr, bytes, protection, flags, mappedFile.descriptor(), 0);
    if (mapped == MAP_FAILED) {
        failure = std::strerror(errno);
        return nullptr;
    }
    address = mapped;
    size = bytes;
    detached = false;
    file = std::move(mappedFile);
    return address;
}

void* Local::attach(unsigned bytes, Mode mode)
{
    return map(bytes, mode == Mode::read ? PROT_READ : PROT_READ | PROT_WRITE, RegularFile());
}

void* Local::resize(unsigned bytes)
{
    if (address == nullptr || bytes == 0) {
        return nullptr;
    }
    void* const moved = mremap(address, size, bytes, MREMAP_MAYMOVE);
    if (moved == MAP_FAILED) {
        failure = std::strerror(errno);
        return nullptr;
    }
    address = moved;
    size = bytes;
    watched.moveTo(address, size);
    return address;
}

void Local::letGo(ByteRange range) const
{
    std::size_t const begin = roundUpToPages(range.begin);
    std::size_t const end = range.end & ~(pageSize_ - 1);
    if (file.isOpen() && begin < end) {
        madvise(static_cast<char*>(address) + begin, end - begin, MADV_DONTNEED);
    }
}

int Local::detach()
{
    detached = true;
    if (address == nullptr) {
        return 0;
    }
    watched.stop();
    int const result = munmap(address, size);
    address = nullptr;
    size = 0;
    file = RegularFile();
    return result;
}

}  // namespace Mem
