// The root directory of the program that end-to-end tests run in place of the installed tool.

#include <cstdlib>

#include "support/root_path.h"

std::string const& Quask::rootDirectory()
{
    static std::string const directory = std::getenv("QUASK_TEST_ROOT");
    return directory;
}
