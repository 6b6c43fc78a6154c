#include "support/root_path.h"

#include <filesystem>
#include <system_error>

namespace Quask {

RootPath::RootPath(Dovan::Platform::DebugHandler& sharedHandler, std::string const& table,
                   bool create)
    : Debuggable(sharedHandler),
      directory_(table.empty() ? rootDirectory() : rootDirectory() + "/" + table),
      table_(table)
{
    if (create) {
        std::error_code ignored;
        std::filesystem::create_directories(directory_, ignored);
    }
}

}  // namespace Quask
