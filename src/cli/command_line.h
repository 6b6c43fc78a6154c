#pragma once

#include <string_view>

#include "cli/options.h"

namespace Quask {

// What differs between the programs that take this command line. A job returns the process's
// exit status: 0, or 1 with the reason on standard error. What it throws passes through.
struct Program
{
    // What --help prints.
    std::string_view helpText;

    // The report on all tables.
    int (*runAllTablesJob)(Options const& options);

    // The job that the options ask for, on the table of this name, which outlives the call.
    int (*runSingleTableJob)(Options const& options, char const* tableName);
};

// All that main() does: reads the command line, resolves EXPR to one table where the job needs
// one, runs the job. The process's exit status: 0, or 1 with the reason on standard error. Reports
// go to std::cout. Permutes `argv`; to be called once in a process.
int runCommandLine(Program const& program, int argc, char** argv);

}  // namespace Quask
