#include "finder/dir_node.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

#include <fcntl.h>

#include "base/descriptor.h"
#include "base/exception.h"

namespace Quask {
namespace {

// The directory's stream; null, with errno set, when it cannot be opened. What was a directory when
// `parent` was read may be a link by now: below the first directory none is followed.
DIR* openDirectory(std::string const& path, DIR* parent)
{
    if (path.size() >= PATH_MAX) {
        // No file in it could be opened by its path.
        errno = ENAMETOOLONG;
        return nullptr;
    }
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC;
    Dovan::Descriptor descriptor(
        parent == nullptr
            ? openat(AT_FDCWD, path.c_str(), flags)
            : openat(dirfd(parent), path.c_str() + path.rfind('/') + 1, flags | O_NOFOLLOW));
    DIR* const stream = descriptor.isOpen() ? fdopendir(descriptor.number()) : nullptr;
    if (stream != nullptr) {
        descriptor.release();
    }
    return stream;
}

}  // namespace

DirNode::DirNode(Dovan::Platform::DebugHandler& sharedHandler, std::string const& path,
                 std::shared_ptr<DirNode> parent)
    : Debuggable(sharedHandler), parent_(std::move(parent)), path_(path)
{
    Dovan::trace(*handler, 9, "DirNode::DirNode() path: ", path_);
    dir_ = openDirectory(path_, parent_ == nullptr ? nullptr : parent_->dir_);
    if (dir_ == nullptr) {
        // The first three are what a directory looks like that others remove or forbid now.
        int const error = errno;
        int const level = error == EACCES || error == ENOENT || error == ENOTDIR ? 5 : 1;
        Dovan::trace(*handler, level, "DirNode::DirNode() failed to open ", path_,
                     " errno: ", std::strerror(error));
    }
}

DirNode::~DirNode()
{
    Dovan::trace(*handler, 9, "DirNode::~DirNode() path: ", path_);
    if (dir_ != nullptr && closedir(dir_) < 0) {
        Dovan::trace(*handler, 1, "DirNode::~DirNode() failed to close ", path_,
                     " errno: ", std::strerror(errno));
    }
    // Ends the ancestors that nobody else holds one by one, each without a parent of its own: left
    // to the members' destructors, every level of the tree would be a level of recursion.
    std::shared_ptr<DirNode> ancestor = std::move(parent_);
    while (ancestor != nullptr && ancestor.use_count() == 1) {
        ancestor = std::move(ancestor->parent_);
    }
}

struct dirent* DirNode::readEntry() const
{
    Dovan::trace(*handler, 9, "DirNode::readEntry() path: ", path_);
    if (dir_ == nullptr) {
        Dovan::trace(*handler, 5, "DirNode::readEntry() cannot read ", path_,
                     " because the directory is not open");
        return nullptr;
    }
    errno = 0;
    struct dirent* const entry = readdir(dir_);
    if (entry == nullptr && errno != 0) {
        Dovan::logAndThrow<Dovan::RuntimeException>(
            *handler,
            "DirNode::readEntry() failed to read " + path_ + " errno: " + std::strerror(errno));
    }
    return entry;
}

}  // namespace Quask
