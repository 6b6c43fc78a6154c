#include "cli/table_choice.h"

#include <iostream>

namespace Quask {

bool findTables(TableFinder& finder, std::string const& expression)
{
    if (!finder.find(expression.c_str())) {
        std::cerr << "Error searching for tables" << std::endl;
        return false;
    }
    if (finder.empty()) {
        std::cerr << "No table was found." << std::endl;
        return false;
    }
    return true;
}

bool findOneTable(TableFinder& finder, std::string const& expression)
{
    if (!findTables(finder, expression)) {
        return false;
    }
    if (finder.size() > 1) {
        std::cerr << "More than one table was found. "
                  << "Try again using one of the following tables:" << std::endl;
        for (std::string const& name : finder) {
            std::cerr << "  - " << name << std::endl;
        }
        return false;
    }
    return true;
}

}  // namespace Quask
