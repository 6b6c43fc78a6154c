#pragma once

#include <ostream>

#include "stat/look.h"
#include "stat/options.h"

namespace Quask::Stat {

// Prints what was found as metrics: one family after another, each with its HELP and TYPE, a sample
// for each table. Names of tables are labels, and are UTF-8 whatever they are.
//
// The format is Prometheus' text format 0.0.4, the one that the textfile collector of the node
// exporter reads. No text is right in OpenMetrics as well: there, TYPE names a counter without its
// "_total", and the collector would then know no type for it.
void printMetrics(Look const& look, Limits const& limits, std::ostream& out);

}  // namespace Quask::Stat
