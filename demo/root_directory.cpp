// The root directory of the demonstration's programs: the one that the environment names, so that
// each demonstration can have its own, or else the one that was chosen for the build.

#include <cstdlib>
#include <string>

#include "support/root_path.h"

std::string const& Quask::rootDirectory()
{
    static std::string const directory = [] {
        char const* const chosen = std::getenv("QUASK_DEMO_ROOT");
        return std::string(chosen != nullptr ? chosen : QUASK_ROOT_DIR);
    }();
    return directory;
}
