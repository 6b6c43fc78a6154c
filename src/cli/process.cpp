#include "cli/process.h"

#include <algorithm>
#include <iostream>

#include <unistd.h>

#include "base/standard_descriptors.h"
#include "base/standard_error.h"
#include "base/standard_output.h"

namespace Quask {

int runProcess(int (*run)(int argc, char** argv), int argc, char** argv)
{
    Dovan::reserveStandardDescriptors();
    Dovan::StandardError const errors;
    Dovan::StandardOutput output(STDOUT_FILENO);
    Dovan::StandardOutput::writeRemainderOnTermination();
    int const status = run(argc, argv);
    if (!output.finish()) {
        std::cerr << "Error writing to standard output" << std::endl;
        return std::max(status, 1);
    }
    return status;
}

}  // namespace Quask
