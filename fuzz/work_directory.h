#pragma once

#include <string>

namespace QuaskFuzzing {

// The directory in which this process lays out its inputs, which is also the root directory of all
// tables: made at the first call, in the directory that the environment's TMPDIR names, else in
// /dev/shm; removed when the process ends by itself, and left where it crashes.
std::string const& workDirectory();

}  // namespace QuaskFuzzing
