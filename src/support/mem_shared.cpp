#include "support/mem_shared.h"

#include <algorithm>
#include <limits>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/mapped_files.h"

namespace Mem {
namespace {

unsigned sizeOf(struct stat const& status)
{
    if (!S_ISREG(status.st_mode)) {
        return 0;
    }
    constexpr off_t largest = std::numeric_limits<unsigned>::max();
    return static_cast<unsigned>(std::min(status.st_size, largest));
}

unsigned sizeOfFile(std::string const& path)
{
    struct stat status
    {};
    return stat(path.c_str(), &status) == 0 ? sizeOf(status) : 0;
}

unsigned sizeOfOpenFile(int descriptor)
{
    struct stat status
    {};
    return fstat(descriptor, &status) == 0 ? sizeOf(status) : 0;
}

std::string textOf(char const* text)
{
    return text == nullptr ? std::string() : std::string(text);
}

}  // namespace

Shared::Shared(char const* directory, char const* name, bool, unsigned /*flags*/, bool)
    : prefix(textOf(directory)), filename(prefix + "/" + textOf(name))
{}

Shared::~Shared()
{
    if (!detached) {
        Shared::detach();
    }
}

void* Shared::attach(unsigned bytes, Mode mode)
{
    // Opening a device or a pipe may already do something to it, so its kind is asked first. That
    // the name is given to another file in between is what the second look is for.
    if (address != nullptr || mode != Mode::read || sizeOfFile(filename) == 0) {
        return nullptr;
    }
    int const descriptor = open(filename.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) {
        return nullptr;
    }
    bool const longEnough = roundUpToPages(sizeOfOpenFile(descriptor)) >= bytes;
    if (!longEnough || map(bytes, PROT_READ, descriptor) == nullptr) {
        close(descriptor);
        return nullptr;
    }
    descriptor_ = descriptor;
    MappedFiles::add(filename.c_str(), address, bytes);
    return address;
}

void* Shared::resize(unsigned bytes)
{
    void* const former = address;
    if (Local::resize(bytes) == nullptr) {
        return nullptr;
    }
    MappedFiles::remove(former);
    MappedFiles::add(filename.c_str(), address, bytes);
    return address;
}

int Shared::detach()
{
    if (descriptor_ >= 0) {
        MappedFiles::remove(address);
        close(descriptor_);
        descriptor_ = -1;
    }
    return Local::detach();
}

unsigned Shared::memSize() const
{
    return descriptor_ >= 0 ? sizeOfOpenFile(descriptor_) : sizeOfFile(filename);
}

}  // namespace Mem
