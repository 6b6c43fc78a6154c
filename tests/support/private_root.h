#pragma once

#include <string>

namespace QuaskTesting {

// A root directory of the test's own, in memory, which rootDirectory() names while it lives. It and
// all that was put below it are removed at the end. One at a time.
class PrivateRoot
{
public:
    PrivateRoot();
    PrivateRoot(PrivateRoot const&) = delete;
    PrivateRoot& operator=(PrivateRoot const&) = delete;
    ~PrivateRoot();

    std::string const& path() const { return path_; }

    // Makes the directory `relative` (with its parents) below the root; its path.
    std::string makeDirectory(std::string const& relative) const;

    // Writes a file of these contents, and the directories that lead to it; its path.
    std::string writeFile(std::string const& relative, std::string const& contents) const;

    // From now on rootDirectory() names `relative` below this directory, which need not exist.
    void setRootDirectory(std::string const& relative) const;

private:
    std::string path_;
};

}  // namespace QuaskTesting
