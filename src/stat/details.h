#pragma once

#include "stat/options.h"

namespace Quask::Stat {

// Prints all there is to know of the one table that the options' EXPR designates: the figures of
// its row, its headers, its clients, and what a walk over its chains finds. The exit status: 0, or
// 1 with the reason on standard error; what comes before the walk is printed also when that fails.
int printDetails(Options const& options);

}  // namespace Quask::Stat
