#pragma once

#include "cli/options.h"

namespace Quask {

// Each builds one scanner, runs its job and returns the process's exit status: 0, or 1 with the
// reason on standard error. What a job throws passes through.

// The client report on all tables, to the options' file if there is one.
int runAllTablesJob(Options const& options);

// The job that the options ask for, on the table of this name, which must outlive the call.
int runSingleTableJob(Options const& options, char const* tableName);

}  // namespace Quask
