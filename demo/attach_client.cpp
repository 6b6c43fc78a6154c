// attach_client ROLE TABLE: maps a table's files as a process in that role does, prints "ready" and
// waits for the end of its standard input. It looks at nothing that it maps.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/debug_handler.h"
#include "support/root_path.h"

namespace {

struct Role
{
    std::string name;
    bool writes;
    std::vector<char const*> files;
};

std::vector<Role> const roles = {
    {"writer", true, {"slots", "vandral.1"}},
    {"shadow", false, {"vandral.1", "slots"}},
    {"keyshadow", false, {"orvik", "vandral.1", "slots"}},
    {"reader", false, {"slots"}},
};

// Maps the whole file until the process ends.
bool mapFile(std::string const& path, bool writable)
{
    int const descriptor = open(path.c_str(), (writable ? O_RDWR : O_RDONLY) | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    struct stat status = {};
    void* address = MAP_FAILED;
    if (fstat(descriptor, &status) == 0) {
        address = mmap(nullptr, static_cast<std::size_t>(status.st_size),
                       writable ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED, descriptor, 0);
    }
    int const error = errno;
    close(descriptor);
    errno = error;
    return address != MAP_FAILED;
}

int usage()
{
    std::fputs("Usage: attach_client writer|shadow|keyshadow|reader TABLE\n", stderr);
    return 1;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        return usage();
    }
    Role const* role = nullptr;
    for (Role const& candidate : roles) {
        if (candidate.name == argv[1]) {
            role = &candidate;
        }
    }
    if (role == nullptr) {
        return usage();
    }
    std::unique_ptr<Dovan::Platform::DebugHandler> const handler(
        Dovan::Platform::getDebugHandler("attach_client"));
    Quask::RootPath const table(*handler, argv[2], false);
    for (char const* const file : role->files) {
        std::string const path = table.directory() + "/" + file;
        if (!mapFile(path, role->writes)) {
            std::fprintf(stderr, "attach_client: %s: %s\n", path.c_str(), std::strerror(errno));
            return 1;
        }
    }
    std::puts("ready");
    std::fflush(stdout);
    char ignored[256];
    while (read(STDIN_FILENO, ignored, sizeof ignored) > 0) {
    }
    return 0;
}
