#pragma once

#include "stat/table_look.h"

namespace Quask::Stat {

// Walks over the chains of the table once and prints how long they are, on standard error how far
// it has come. The exit status: 0, or 1 with the reason on standard error when the table cannot be
// walked to its end; then nothing is printed of the walk.
int printWalk(TableLook const& table);

}  // namespace Quask::Stat
