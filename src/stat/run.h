#pragma once

namespace Quask::Stat {

// The whole of quask-stat after main(): reads the command line and does what it asks for. The
// process's exit status: 0, or 1 with the reason on standard error; of --check that of monitoring
// plug-ins. Prints on std::cout. Permutes `argv`; to be called once in a process.
int run(int argc, char** argv);

}  // namespace Quask::Stat
