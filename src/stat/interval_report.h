#pragma once

#include "stat/options.h"

namespace Quask::Stat {

// Shows the rows again after each of the options' intervals, with what has changed in it: on a
// terminal in place, with a first display at once; elsewhere as one block after another, with an
// empty line between. The exit status: 0 after the number of intervals that was asked for or when
// the user quits, 1 with the reason on standard error. Ends by SIGINT when interrupted.
int printIntervals(Options const& options);

}  // namespace Quask::Stat
