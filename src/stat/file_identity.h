#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include <sys/stat.h>
#include <sys/types.h>

namespace Quask::Stat {

// Which file it is, whatever its name: the same in every mount namespace, and another one for a
// file that was made in place of a removed one.
struct FileIdentity
{
    dev_t device = 0;
    ino_t inode = 0;

    bool operator==(FileIdentity const&) const = default;
};

inline FileIdentity identityOf(struct stat const& status)
{
    return {status.st_dev, status.st_ino};
}

struct FileIdentityHash
{
    std::size_t operator()(FileIdentity const& file) const
    {
        return std::hash<std::uint64_t>()(file.inode * 31 + file.device);
    }
};

}  // namespace Quask::Stat
