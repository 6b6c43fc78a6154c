#pragma once

#include <stdexcept>
#include <string>

#include <sys/mount.h>

namespace QuaskTesting {

// While it lives, an empty file system in memory that holds so many bytes, rounded up to pages, is
// mounted on the directory. Others may enter it, and programs in it may be run. For a process in
// namespaces of its own: see own_namespaces.h.
class SmallFileSystem
{
public:
    SmallFileSystem(std::string directory, std::size_t bytes) : directory_(std::move(directory))
    {
        std::string const options = "mode=0755,size=" + std::to_string(bytes);
        if (mount("tmpfs", directory_.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, options.c_str()) !=
            0) {
            throw std::runtime_error("cannot mount on " + directory_);
        }
    }
    SmallFileSystem(SmallFileSystem const&) = delete;
    SmallFileSystem& operator=(SmallFileSystem const&) = delete;
    ~SmallFileSystem() { umount2(directory_.c_str(), MNT_DETACH); }

private:
    std::string directory_;
};

}  // namespace QuaskTesting
