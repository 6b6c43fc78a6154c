#include "cli/command_line.h"

#include <iostream>

#include "cli/table_choice.h"
#include "finder/table_finder.h"

namespace Quask {

int runCommandLine(Program const& program, int argc, char** argv)
{
    Options const options = parseOptions(argc, argv);
    if (options.help) {
        std::cout << program.helpText << std::flush;
        return 0;
    }
    if (options.whoAll) {
        return program.runAllTablesJob(options);
    }
    TableFinder finder;
    if (!findOneTable(finder, options.expression)) {
        return 1;
    }
    return program.runSingleTableJob(options, finder.front().c_str());
}

}  // namespace Quask
