#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "stat/smart_table.h"
#include "stat/table_state.h"

namespace Quask::Stat {

// What the command line asks for.
struct Options
{
    enum class Job
    {
        rows,
        details,      // -v
        metrics,      // -m
        check,        // --check
        listColumns,  // -H
        help,         // -h
        version,      // -V
    };

    Job job = Job::rows;
    RowFormat::Kind format = RowFormat::Kind::table;  // -J, -r
    bool hasHeadings = true;                          // false: -n
    std::optional<std::string> columns;               // -o
    std::optional<double> interval;                   // -i, in seconds
    std::optional<std::uint64_t> count;               // -c, of intervals
    Limits limits;                                    // of --check
    std::string expression;                           // EXPR, or empty
};

// Reads the command line. Options may stand anywhere; of the other arguments the first is EXPR, and
// there may be no more. Nothing, with a line on standard error, when it makes no sense. Permutes
// `argv`. To be called once in a process.
std::optional<Options> parseOptions(int argc, char** argv);

}  // namespace Quask::Stat
