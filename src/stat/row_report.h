#pragma once

#include <string>
#include <vector>

#include "stat/columns.h"
#include "stat/look.h"
#include "stat/options.h"

namespace Quask::Stat {

// Whether standard output is a terminal, and how many characters and lines that has.
struct Terminal
{
    bool isThere = false;
    unsigned width = 80;
    unsigned height = 24;

    static Terminal ofStandardOutput();
};

// The columns that the options ask for. None, with a line on standard error, when they make no
// sense.
std::vector<Column const*> columnsOf(Options const& options);

// The rows of all tables of `look` as the options ask for; with rates when there is a look before.
std::string rowsOf(Look const& look, Look const* before, std::vector<Column const*> const& columns,
                   Options const& options, Terminal const& terminal);

// One row for each table. The exit status: 0, or 1 with the reason on standard error.
int printRows(Options const& options);

// One line for each column.
void listColumns();

}  // namespace Quask::Stat
