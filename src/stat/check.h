#pragma once

#include "stat/options.h"

namespace Quask::Stat {

// Prints what is wrong with the tables, as monitoring plug-ins do: first one line on all of them,
// then a line for each table that something is wrong with. The exit status is theirs as well: 0 all
// right, 1 warning, 2 critical, 3 cannot tell. Does not throw what lookAtTables() throws.
int check(Options const& options);

}  // namespace Quask::Stat
