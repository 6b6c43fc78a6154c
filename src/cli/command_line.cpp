#include "cli/command_line.h"

#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/help_text.h"
#include "cli/job_dispatch.h"
#include "cli/options.h"
#include "finder/table_finder.h"

namespace Quask {

int runCommandLine(int argc, char** argv)
{
    Options const options = parseOptions(argc, argv);
    if (options.help) {
        std::cout << helpText << std::flush;
        return 0;
    }
    if (options.whoAll) {
        return runAllTablesJob(options);
    }
    TableFinder finder;
    if (!finder.find(options.expression.c_str())) {
        std::cerr << "Error searching for tables" << std::endl;
        return 1;
    }
    if (finder.empty()) {
        std::cerr << "No table was found." << std::endl;
        return 1;
    }
    if (finder.size() > 1) {
        std::cerr << "More than one table was found. "
                  << "Try again using one of the following tables:" << std::endl;
        for (std::string const& name : finder) {
            std::cerr << "  - " << name << std::endl;
        }
        return 1;
    }
    return runSingleTableJob(options, finder.front().c_str());
}

}  // namespace Quask
