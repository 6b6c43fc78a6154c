#pragma once

#include <ostream>

#include "stat/look.h"
#include "stat/options.h"

namespace Quask::Stat {

// Prints what was found as metrics, in the text format that the textfile collector of Prometheus'
// node exporter reads: one family after another, each with its HELP and TYPE, a sample for each
// table. Names of tables are labels, and are UTF-8 whatever they are.
void printMetrics(Look const& look, Limits const& limits, std::ostream& out);

}  // namespace Quask::Stat
