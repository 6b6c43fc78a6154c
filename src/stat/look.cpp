#include "stat/look.h"

#include <algorithm>
#include <iostream>

#include "finder/table_finder.h"
#include "stat/client_search.h"

namespace Quask::Stat {

bool lookAtTables(std::string const& expression, Look& look)
{
    TableFinder finder;
    if (!finder.find(expression.c_str())) {
        return false;
    }
    std::ranges::sort(finder);
    look.tables.clear();
    for (std::string const& name : finder) {
        look.tables.push_back({.name = name, .figures = readTableFigures(name), .clients = {}});
    }
    look.time = std::chrono::steady_clock::now();
    ClientSearch search(look.tables, [&expression](std::string const& name) {
        return TableFinder::designates(expression, name);
    });
    look.unreadProcesses = search.run();
    std::ranges::sort(look.tables, {}, &TableLook::name);
    return true;
}

int sayNoSearch()
{
    std::cerr << "Error searching for tables" << std::endl;
    return 1;
}

int sayNoTable()
{
    std::cerr << "No table was found." << std::endl;
    return 1;
}

void sayUnread(std::size_t processes)
{
    if (processes > 0) {
        std::cerr << "quask-stat: " << processes << (processes == 1 ? " process" : " processes")
                  << " could not be looked into; clients may be missing" << std::endl;
    }
}

}  // namespace Quask::Stat
