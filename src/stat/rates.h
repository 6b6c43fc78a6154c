#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "stat/table_figures.h"

namespace Quask::Stat {

// What happened to a table between two looks at its headers, per second.
struct Rates
{
    double updates = 0;        // values rewritten in place
    double notifications = 0;  // of both notification tables
    double net = 0;            // insertions less removals: the headers do not tell them apart
    double growths = 0;        // changes of the number of slots
};

// Nothing when the headers could not be read both times, when the table was replaced in between,
// and when no time has passed. The counters have 32 bits: they may go past their end once.
std::optional<Rates> ratesBetween(TableFigures const& before, TableFigures const& after,
                                  std::chrono::duration<double> elapsed);

}  // namespace Quask::Stat
