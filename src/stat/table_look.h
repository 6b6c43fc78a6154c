#pragma once

#include <string>

#include "stat/table_clients.h"
#include "stat/table_figures.h"

namespace Quask::Stat {

// One table as it was found at one moment.
struct TableLook
{
    std::string name;        // its path below the root directory
    bool isRemoved = false;  // there is no such table any more; only clients hold its files
    TableFigures figures;    // nothing for a removed table
    TableClients clients;
};

}  // namespace Quask::Stat
