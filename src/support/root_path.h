#pragma once

#include <string>

#include "base/debug_handler.h"
#include "base/debuggable.h"

namespace Quask {

// The directory of all tables. Not defined in this library: each program that links it brings a
// definition of its own, fixed when it is built.
std::string const& rootDirectory();

// The directory of one table's files; of all tables for the empty name.
class RootPath : public Dovan::Debuggable
{
public:
    // `table` is the table's path below the root directory, taken as it is. With `create` the
    // directory and its parents are made where they are missing (for writers; failure shows when
    // the files are opened). `sharedHandler` must outlive the object.
    RootPath(Dovan::Platform::DebugHandler& sharedHandler, std::string const& table, bool create);

    std::string const& directory() const { return directory_; }
    std::string const& table() const { return table_; }

private:
    std::string directory_;
    std::string table_;
};

}  // namespace Quask
