#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "stat/options.h"
#include "stat/process_info.h"
#include "stat/table_look.h"

namespace Quask::Stat {

struct ClientDetails
{
    Client const& client;
    ProcessInfo process;
};

// What -v shows of a table but for its walk.
struct TableDetails
{
    TableLook const& table;
    std::string state;  // the conditions in words
    std::vector<ClientDetails> clients;
    std::size_t unreadProcesses;  // that could not be looked into: clients may be missing
};

// Prints all there is to know of the one table that the options designate, as lines or as JSON: its
// figures, its headers, its clients, and what a walk over its chains finds. The exit status: 0, or
// 1 with the reason on standard error.
int printDetails(Options const& options);

}  // namespace Quask::Stat
