#pragma once

namespace Quask {

// A whole process from main() on: the standard descriptors are made safe, standard output is
// collected and written in large pieces, and signals end the process after whole lines. Between
// that, `run` reads the command line, prints on std::cout and std::cerr, and returns the exit
// status. The result is that, but at least 1, with a line on standard error, when not all of the
// output could be written. What `run` throws passes through. To be called once in a process.
int runProcess(int (*run)(int argc, char** argv), int argc, char** argv);

}  // namespace Quask
