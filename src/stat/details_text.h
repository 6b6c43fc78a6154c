#pragma once

#include <ostream>

#include "stat/details.h"
#include "stat/walk.h"

namespace Quask::Stat {

// Prints one table in depth: all columns, one per line, the headers' notable fields, the clients.
void printTable(TableDetails const& details, std::ostream& out);

// Prints what comes after that: how long the chains are, with a histogram as wide as the terminal.
void printWalk(Walk const& walk, std::ostream& out);

}  // namespace Quask::Stat
