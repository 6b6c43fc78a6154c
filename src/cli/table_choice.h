#pragma once

#include <string>

#include "finder/table_finder.h"

namespace Quask {

// Both fill `finder`, which is empty, with the tables that EXPR designates. False, with the reason
// on standard error, when that is not what was wanted. Throw what TableFinder::find() throws.

// One table or more.
bool findTables(TableFinder& finder, std::string const& expression);

// One table. Where there are several, their names are on standard error to choose from.
bool findOneTable(TableFinder& finder, std::string const& expression);

}  // namespace Quask
