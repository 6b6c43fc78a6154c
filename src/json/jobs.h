#pragma once

#include "cli/options.h"

namespace Quask::Json {

// The jobs of quask-json: see Program.
int runAllTablesJob(Options const& options);
int runSingleTableJob(Options const& options, char const* tableName);

}  // namespace Quask::Json
