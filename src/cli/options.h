#pragma once

#include <string>

#include "report/quask_textify.h"

namespace Quask {

// What the command line asks for.
struct Options
{
    bool printEmpty = false;                          // -e
    bool showWho = false;                             // -w, --who
    bool showHeaders = false;                         // -x, -w, --who
    bool whoAll = false;                              // -a, --who-all, and always with -f
    bool help = false;                                // -h, --help: what came after it was ignored
    QuaskTextify::Style style = QuaskTextify::Plain;  // the last of -p, -t, -x and -w wins
    std::string outputFile;                           // -f; empty is standard output
    std::string expression;                           // EXPR, or empty
};

// Reads the command line. Options may be anywhere; of the other arguments the first is EXPR and
// the rest are ignored. An option that is not known is reported on standard error and ignored.
// Permutes `argv`. To be called once in a process.
Options parseOptions(int argc, char** argv);

}  // namespace Quask
