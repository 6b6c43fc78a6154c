// Apart from main() the only thing that the tool adds to the libraries.

#include <string>

#include "support/root_path.h"

std::string const& Quask::rootDirectory()
{
    static std::string const directory = QUASK_ROOT_DIR;
    return directory;
}
