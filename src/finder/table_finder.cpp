#include "finder/table_finder.h"

#include <memory>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <fnmatch.h>

#include "base/exception.h"
#include "finder/dir_node.h"
#include "support/root_path.h"
#include "support/util.h"

namespace Quask {
namespace {

// What the path of a matching directory looks like after that of the root directory.
std::string relativePattern(std::string_view expr)
{
    if (expr.empty()) {
        return "/*";
    }
    std::string const start = expr.front() == '/' ? "" : "/*";
    return start + std::string(expr) + "*";
}

// Whether a directory matches, by its path.
bool isMatch(std::string const& pattern, std::string const& path)
{
    return fnmatch(pattern.c_str(), path.c_str(), 0) == 0;
}

bool isSelfOrParent(std::string_view name)
{
    return name == "." || name == "..";
}

}  // namespace

TableFinder::TableFinder() : Debuggable("Quask") {}

TableFinder::TableFinder(Dovan::Platform::DebugHandler& sharedHandler) : Debuggable(sharedHandler)
{}

TableFinder::~TableFinder() = default;

bool TableFinder::find(char const* expr)
{
    Dovan::trace(*handler, 3, "TableFinder::find() expression: ", expr);
    std::string const root = RootPath(*handler, "", false).directory();
    std::string const pattern = root + relativePattern(expr);
    auto current = std::make_shared<DirNode>(*handler, root, nullptr);
    if (!current->isOpen()) {
        return false;
    }
    while (current != nullptr) {
        dirent const* const entry = current->readEntry();
        if (entry == nullptr) {
            current = current->parent();
            continue;
        }
        if (entry->d_type == DT_DIR) {
            if (!isSelfOrParent(entry->d_name)) {
                current = std::make_shared<DirNode>(*handler, current->path() + "/" + entry->d_name,
                                                    current);
            }
            continue;
        }
        // Also left out is an entry whose type the file system does not give.
        if (entry->d_type != DT_REG || !Util::isQuaskFile(*handler, entry->d_name) ||
            !isMatch(pattern, current->path())) {
            continue;
        }
        if (current->parent() == nullptr) {
            // Only a root directory and an expression that make one pattern together lead here. The
            // text is fixed as it is.
            Dovan::logAndThrow<Dovan::RuntimeException>(
                *handler,
                "TableFinder::find() unexpectedlyfound Quask files in root path directory");
        }
        std::string name = current->path().substr(root.size() + 1);
        Dovan::trace(*handler, 5, "TableFinder::find() found table '", name, "'");
        push_back(std::move(name));
        current = current->parent();
    }
    return true;
}

bool TableFinder::designates(std::string const& expr, std::string const& tableName)
{
    return isMatch(rootDirectory() + relativePattern(expr), rootDirectory() + "/" + tableName);
}

}  // namespace Quask
