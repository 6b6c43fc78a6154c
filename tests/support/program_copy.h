#pragma once

#include <optional>
#include <string>

#include "support/small_file_system.h"

namespace QuaskTesting {

// A copy of a program, removed at the end, in a directory of its own where every user can run it.
class ProgramCopy
{
public:
    // `relative` is the copy's path below that directory.
    ProgramCopy(std::string const& program, std::string const& relative);
    ProgramCopy(ProgramCopy const&) = delete;
    ProgramCopy& operator=(ProgramCopy const&) = delete;
    ~ProgramCopy();

    std::string const& path() const { return path_; }

private:
    std::string directory_;
    std::optional<SmallFileSystem> fileSystem_;  // where the machine's may bar programs
    std::string path_;
};

}  // namespace QuaskTesting
