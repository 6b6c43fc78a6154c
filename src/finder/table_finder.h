#pragma once

#include <string>
#include <vector>

#include "base/debug_handler.h"
#include "base/debuggable.h"

namespace Quask {

// The names of the tables that an expression designates; a list that fills itself. A table is a
// directory below the root directory that holds table files, its name the path below the root
// directory. Writers may make and remove tables during the search. One thread at a time.
class TableFinder : public std::vector<std::string>, public Dovan::Debuggable
{
public:
    // Writes its diagnostics to the channel "Quask".
    TableFinder();

    // Writes them to `sharedHandler`, which must outlive the finder.
    explicit TableFinder(Dovan::Platform::DebugHandler& sharedHandler);

    ~TableFinder() override;

    // Appends the names of all matching tables, in the order of the file system, depth first. False
    // when the root directory cannot be opened; a directory below it that cannot be opened holds no
    // tables. Throws Dovan::RuntimeException when a directory cannot be read, and when the root
    // directory itself matches and holds a table file.
    //
    // An `expr` that begins with "/" is the beginning of a path below the root directory; any other
    // may be anywhere in that path; the empty one designates every table. `expr` may be a
    // shell's pattern, whose * and ? also match a slash. It is matched after the root directory,
    // which is read as a pattern as well.
    //
    // A directory yields its name at the first table file read, and nothing in it is visited after
    // that. So a table inside another table's directory is found only when it comes first.
    bool find(char const* expr);

    // Whether `expr` designates a table of this name, if there is one.
    static bool designates(std::string const& expr, std::string const& tableName);
};

}  // namespace Quask
