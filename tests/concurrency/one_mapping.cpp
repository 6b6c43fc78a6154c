// A stand-in for Mem::Shared whose segments are the mappings that the writer in this process has of
// the same files. ThreadSanitizer goes by addresses: of two mappings of one file it does not know
// that a store to the one is a store to the other, and would find nothing.

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <sys/stat.h>

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

Shared::Shared(char const* directory, char const* name, bool, unsigned /*flags*/, bool)
    : prefix(directory), filename(prefix + "/" + name)
{}

Shared::~Shared()
{
    Shared::detach();
}

void* Shared::attach(unsigned bytes, Mode /*mode*/)
{
    address = writersMapping(filename);
    size = bytes;
    return address;
}

void* Shared::resize(unsigned bytes)
{
    size = bytes;
    return address;
}

// The mapping is the writer's to undo.
int Shared::detach()
{
    address = nullptr;
    size = 0;
    descriptor_ = -1;  // which no file is open for
    detached = true;
    return 0;
}

unsigned Shared::memSize() const
{
    struct stat status = {};
    return stat(filename.c_str(), &status) == 0 ? static_cast<unsigned>(status.st_size) : 0;
}

}  // namespace Mem
