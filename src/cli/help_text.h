#pragma once

#include <string_view>

namespace Quask {

// What --help prints: the description, then the usage.
inline constexpr std::string_view helpText =
    R"(Description:
   quask is a simple utility that passively walks a Quask table,
   printing the chain of elements for each bucket. It can also print
   information about table headers and about clients of Quask tables.


Usage:
   quask [OPTIONS]

   where OPTIONS are optional flags described below
   --who-all, -a Prints per-collection info about processes that are
                 attached to each collection
   -f <FILE>     Direct output towards a file

   quask [OPTIONS] [EXPR]

   where OPTIONS are optional flags described below, and EXPR is a
   quask collection name, or the full path to a specific collection.

   -e            Enable printing of empty buckets
   -f <FILE>     Direct output towards a file
   -p            Pretty prints of values
   -t            VOSK prints of values
   -x            Prints headers for the buckets, slots, and vandral tables
   --who, -w     Prints info about processes that are attached to the
                 collection

Help:
   --help, -h    Display this helper and exit


)";

}  // namespace Quask
