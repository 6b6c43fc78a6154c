// A stand-in for Mem::Local and Mem::Shared whose segments are the mappings that the writer in this
// process has of the same files. ThreadSanitizer goes by addresses: of two mappings of one file it
// does not know that a store to the one is a store to the other, and would find nothing.

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include "support/mem_shared.h"

namespace Mem {
namespace {

// Where this process has mapped the file for writing, or null.
void* writersMapping(std::string const& path)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::string range, permissions, offset, device, inode, mapped;
        fields >> range >> permissions >> offset >> device >> inode >> mapped;
        if (permissions == "rw-s" && mapped == path) {
            std::uintptr_t const start = std::stoull(range, nullptr, 16);
            return reinterpret_cast<void*>(start);
        }
    }
    return nullptr;
}

}  // namespace

std::size_t const pageSize_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

std::size_t roundUpToPages(std::size_t size)
{
    return (size + pageSize_ - 1) & ~(pageSize_ - 1);
}

Local::~Local() = default;

void* Local::attach(unsigned /*bytes*/, Mode /*mode*/)
{
    return nullptr;
}

void* Local::resize(unsigned bytes)
{
    size = bytes;
    return address;
}

void Local::letGo(ByteRange /*range*/) const {}

// The mapping is the writer's to undo.
int Local::detach()
{
    address = nullptr;
    size = 0;
    detached = true;
    return 0;
}

Shared::Shared(char const* directory, char const* name, bool, unsigned /*flags*/, bool)
    : prefix(directory), filename(prefix + "/" + name)
{}

Shared::~Shared() = default;

void* Shared::attach(unsigned bytes, Mode /*mode*/)
{
    address = writersMapping(filename);
    size = bytes;
    return address;
}

unsigned Shared::memSize() const
{
    struct stat status = {};
    return stat(filename.c_str(), &status) == 0 ? static_cast<unsigned>(status.st_size) : 0;
}

bool Shared::isCurrent() const
{
    return true;
}

}  // namespace Mem
