#pragma once

#include <string_view>

namespace Quask::Json {

// What --help prints.
inline constexpr std::string_view helpText =
    R"(Description:
   quask-json prints the reports of quask as JSON, for other programs.
   Each line is one JSON text.

Usage:
   quask-json [-e] [EXPR]       the elements of a table, one line per
                                bucket, then a line with the counters
   quask-json -x [EXPR]         the headers of a table's files
   quask-json -w [EXPR]         the processes that have a table mapped
   quask-json -a [-f FILE]      the same for all tables, one line per
                                table

   EXPR is any part of a table's name, or with a leading / its beginning.

Options:
   -a, --who-all  Print the clients of all tables
   -e             Print empty buckets, too
   -f FILE        Print the clients of all tables into FILE
   -h, --help     Print this help and exit
   -p, -t         Accepted as by quask; values are always printed by type
   -w, --who      Print the clients of one table
   -x             Print the headers of one table
)";

}  // namespace Quask::Json
