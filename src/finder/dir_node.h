#pragma once

#include <memory>
#include <string>

#include <dirent.h>

#include "base/debug_handler.h"
#include "base/debuggable.h"

namespace Quask {

// One open directory in a depth-first walk. Owns its stream and keeps the node it was reached from
// alive, so that a walker holds the innermost node alone and resumes an outer stream where it
// stopped. Each level of a walk costs one descriptor. One thread at a time.
//
// A directory that cannot be opened makes a node that has no entries; only reading throws.
class DirNode : public Dovan::Debuggable
{
public:
    // Opens `path`: the first node of a walk, with an empty `parent`, wherever its links lead; any
    // other as an entry of the open `parent`, whose path is what comes before the last slash, and
    // only when it is not a link. `sharedHandler` must outlive the node. Why a directory cannot be
    // opened is logged: at level 5 when it is missing, forbidden or not a directory, at level 1 for
    // any other reason.
    DirNode(Dovan::Platform::DebugHandler& sharedHandler, std::string const& path,
            std::shared_ptr<DirNode> parent);

    // Closes the stream, then lets go of the parent. However long the chain of parents that end
    // with this node, its end takes no more of the stack than one of them.
    ~DirNode() override;

    // The next entry in the order of the file system, "." and ".." included; null after the last
    // one and when the directory is not open. Valid until the next call or the node's end. Throws
    // Dovan::RuntimeException when the directory cannot be read.
    struct dirent* readEntry() const;

    // As given to the constructor.
    std::string const& path() const { return path_; }

    std::shared_ptr<DirNode> parent() const { return parent_; }

    bool isOpen() const { return dir_ != nullptr; }

private:
    DIR* dir_ = nullptr;
    std::shared_ptr<DirNode> parent_;
    std::string path_;
};

}  // namespace Quask
