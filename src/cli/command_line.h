#pragma once

namespace Quask {

// The whole tool behind main(): reads the command line, resolves EXPR to one table where the job
// needs one, runs the job. The process's exit status: 0, or 1 with the reason on standard error.
// Reports go to std::cout. Permutes `argv`; to be called once in a process.
int runCommandLine(int argc, char** argv);

}  // namespace Quask
