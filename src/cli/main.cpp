#include <iostream>

#include <unistd.h>

#include "base/standard_descriptors.h"
#include "base/standard_error.h"
#include "base/standard_output.h"
#include "cli/command_line.h"

int main(int argc, char** argv)
{
    Dovan::reserveStandardDescriptors();
    Dovan::StandardError const errors;
    Dovan::StandardOutput output(STDOUT_FILENO);
    Dovan::StandardOutput::writeRemainderOnTermination();
    int const status = Quask::runCommandLine(argc, argv);
    if (!output.finish()) {
        std::cerr << "Error writing to standard output" << std::endl;
        return 1;
    }
    return status;
}
