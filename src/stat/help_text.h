#pragma once

#include <string_view>

namespace Quask::Stat {

// What --help prints.
inline constexpr std::string_view helpText =
    R"(Description:
   quask-stat shows how full Quask tables are, who writes and reads them,
   and what is wrong with them.

Usage:
   quask-stat [-J | -r] [-n] [-o LIST] [-i SECONDS [-c COUNT]] [EXPR]
   quask-stat -v [-J] [EXPR]    one table in depth
   quask-stat -m [EXPR]         metrics as text
   quask-stat --check [EXPR]    a line, and an exit status for monitoring
   quask-stat -H | -h | -V

   EXPR is any part of a table's name, or with a leading / its beginning.
   Without it all tables are meant.

Options:
   -c, --count COUNT       End after so many intervals
   -h, --help              Print this help and exit
   -H, --list-columns      List the columns
   -i, --interval SECONDS  Show what changes in each interval
   -J, --json              Print JSON
   -m, --metrics           Print metrics for a collector of text files
   -n, --noheadings        Print no headings
   -o, --output LIST       Show these columns; +LIST adds them
   -r, --raw               Print one space between cells
   -v, --verbose           Print all of one table, and walk its chains
   -V, --version           Print the version and exit
   --check[=WARNING[,CRITICAL]]
                           Check the tables; the limits are percents of
                           the most slots that there may be
)";

}  // namespace Quask::Stat
