#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "stat/table_look.h"

namespace Quask::Stat {

// Some tables and their clients, looked at once.
struct Look
{
    std::vector<TableLook> tables;    // by name
    std::size_t unreadProcesses = 0;  // that could not be looked into: clients may be missing
    std::chrono::steady_clock::time_point time;  // when the headers had been read
};

// Looks at the tables that `expression` designates, and at those that have been removed while
// processes still hold their files. False when the root directory cannot be searched; nothing may
// be found. Throws Dovan::RuntimeException when /proc or a directory cannot be read.
bool lookAtTables(std::string const& expression, Look& look);

// Says on standard error that the root directory cannot be searched. The exit status, 1.
int sayNoSearch();

// Says on standard error that the expression designates no table. The exit status, 1.
int sayNoTable();

// Says on standard error how many processes could not be looked into, if any.
void sayUnread(std::size_t processes);

}  // namespace Quask::Stat
