#include "stat/run.h"

#include <algorithm>
#include <clocale>
#include <iostream>
#include <optional>
#include <string_view>

#include "base/exception.h"
#include "stat/check.h"
#include "stat/details.h"
#include "stat/help_text.h"
#include "stat/interval_report.h"
#include "stat/look.h"
#include "stat/metrics.h"
#include "stat/options.h"
#include "stat/row_report.h"
#include "stat/table_state.h"

namespace Quask::Stat {
namespace {

int printMetrics(Options const& options)
{
    Look look;
    if (!lookAtTables(options.expression, look)) {
        return sayNoSearch();
    }
    sayUnread(look.unreadProcesses);
    printMetrics(look, options.limits, std::cout);
    return 0;
}

// Whatever else the command line says: monitoring takes 1 for a warning.
bool asksForCheck(int argc, char** argv)
{
    return std::any_of(argv, argv + argc, [](char const* word) {
        return std::string_view(word).starts_with("--check");
    });
}

int runJob(Options const& options)
{
    switch (options.job) {
        case Options::Job::rows:
            return options.interval ? printIntervals(options) : printRows(options);
        case Options::Job::details:
            return printDetails(options);
        case Options::Job::metrics:
            return printMetrics(options);
        case Options::Job::check:
            return check(options);
        case Options::Job::listColumns:
            listColumns();
            return 0;
        case Options::Job::help:
            std::cout << helpText;
            return 0;
        case Options::Job::version:
            std::cout << "quask-stat " QUASK_VERSION "\n";
            return 0;
    }
    return 1;
}

}  // namespace

int run(int argc, char** argv)
{
    // For the characters that may be printed; numbers stay as they are everywhere.
    static_cast<void>(std::setlocale(LC_CTYPE, ""));
    std::optional const options = parseOptions(argc, argv);
    if (!options) {
        std::cerr << "Try 'quask-stat --help'." << std::endl;
        return asksForCheck(argc, argv) ? static_cast<int>(Severity::cannotTell) : 1;
    }
    try {
        return runJob(*options);
    } catch (Dovan::RuntimeException const& exception) {
        std::cerr << "quask-stat: " << exception.what() << std::endl;
        return 1;
    }
}

}  // namespace Quask::Stat
