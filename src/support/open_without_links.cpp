#include "support/open_without_links.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>

#include "support/root_path.h"

namespace Mem {
namespace {

using Dovan::Descriptor;

// The directory above a file that may be reached through links.
std::string_view trustedDirectory(std::string_view path)
{
    std::string_view const root = Quask::rootDirectory();
    bool const isBelowRoot =
        path.starts_with(root) && path.size() > root.size() && path[root.size()] == '/';
    return isBelowRoot ? root : path.substr(0, path.rfind('/'));
}

// The directory's path without links; empty, with errno set, when it cannot be reached.
std::string resolve(std::string const& directory)
{
    struct Free
    {
        void operator()(char* text) const { std::free(text); }
    };
    std::unique_ptr<char, Free> const resolved(realpath(directory.c_str(), nullptr));
    return resolved == nullptr ? std::string() : std::string(resolved.get());
}

// Takes the first component off `path`.
std::string_view takeComponent(std::string_view& path)
{
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
    std::string_view const component = path.substr(0, path.find('/'));
    path.remove_prefix(component.size());
    return component;
}

bool hasParentComponent(std::string_view path)
{
    while (!path.empty()) {
        if (takeComponent(path) == "..") {
            return true;
        }
    }
    return false;
}

// One directory after another, for kernels and sandboxes that do not offer openat2().
Descriptor openStepByStep(std::string_view path, int flags)
{
    Descriptor directory(open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    while (directory.isOpen()) {
        std::string const component(takeComponent(path));
        bool const isLast = path.find_first_not_of('/') == std::string_view::npos;
        directory =
            Descriptor(openat(directory.number(), component.c_str(),
                              O_NOFOLLOW | O_CLOEXEC | (isLast ? flags : O_PATH | O_DIRECTORY)));
        if (isLast) {
            break;
        }
    }
    return directory;
}

}  // namespace

Descriptor openWithoutLinks(std::string const& path, int flags)
{
    std::string const trusted(trustedDirectory(path));
    std::string const below = path.substr(trusted.size());
    std::string const resolved = resolve(trusted);
    if (resolved.empty()) {
        return {};
    }
    if (hasParentComponent(below)) {
        errno = ELOOP;
        return {};
    }
    std::string const linkless = resolved + below;
    open_how how{};
    how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC);
    how.resolve = RESOLVE_NO_SYMLINKS;
    long const opened = syscall(SYS_openat2, AT_FDCWD, linkless.c_str(), &how, sizeof how);
    if (opened < 0 && (errno == ENOSYS || errno == EPERM)) {
        return openStepByStep(linkless, flags);
    }
    return Descriptor(static_cast<int>(opened));
}

}  // namespace Mem
