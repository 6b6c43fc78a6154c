// Searches a tree of directories for the tables that an expression designates. The input is text:
// the expression in the first line, then lines that each name one thing below the root directory:
// a directory when the line ends in "/", a symbolic link to the root directory when it begins with
// "@", else a file. The directories that lead to it are made; a name that cannot be made is left
// out.
//
// What is found is held against the tree: every name is a table's and matches, and every table that
// matches is found, unless the walk has left a directory above it on finding that.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include "finder/table_finder.h"
#include "input.h"
#include "work_directory.h"

namespace {

namespace fs = std::filesystem;

using QuaskFuzzing::Input;
using QuaskFuzzing::workDirectory;

class Tree
{
public:
    // Makes the tree of these lines in place of the one before.
    void make(std::string_view lines)
    {
        for (fs::directory_entry const& entry : fs::directory_iterator(workDirectory())) {
            fs::remove_all(entry.path());
        }
        Input input(reinterpret_cast<std::uint8_t const*>(lines.data()), lines.size());
        for (int i = 0; i < maximumLines && !input.atEnd(); ++i) {
            add(std::string(input.line()));
        }
        collectTables();
        lines_ = lines;
    }

    std::string const& lines() const { return lines_; }

    // The directories that hold table files, as paths below the root directory.
    std::set<std::string> const& tables() const { return tables_; }

private:
    static constexpr int maximumLines = 64;

    // As deep as a walk gets with few descriptors.
    static constexpr int maximumDepth = 64;

    static bool isPlain(std::string_view component)
    {
        return !component.empty() && component != "." && component != "..";
    }

    static void add(std::string line)
    {
        bool const isLink = line.starts_with('@');
        line.erase(0, isLink ? 1 : 0);
        std::string path = workDirectory();
        std::size_t begin = 0;
        for (int depth = 0; depth < maximumDepth; ++depth) {
            std::size_t const end = std::min(line.find('/', begin), line.size());
            std::string const component = line.substr(begin, end - begin);
            if (!isPlain(component)) {
                return;
            }
            path += "/" + component;
            if (end == line.size()) {
                addLast(path, isLink);
                return;
            }
            mkdir(path.c_str(), 0700);
            begin = end + 1;
        }
    }

    static void addLast(std::string const& path, bool isLink)
    {
        if (isLink) {
            [[maybe_unused]] int const result = symlink(workDirectory().c_str(), path.c_str());
            return;
        }
        int const descriptor =
            open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (descriptor >= 0) {
            close(descriptor);
        }
    }

    void collectTables()
    {
        tables_.clear();
        std::size_t const prefix = workDirectory().size() + 1;
        for (auto const& entry : fs::recursive_directory_iterator(workDirectory())) {
            std::string const name = entry.path().filename();
            bool const isTableFile =
                name == "buckets" || name == "slots" || name == "vandral.1" || name == "vandral.2";
            std::string const directory = entry.path().parent_path();
            if (isTableFile && fs::is_regular_file(entry.symlink_status()) &&
                directory != workDirectory()) {
                tables_.insert(directory.substr(prefix));
            }
        }
    }

    std::string lines_;
    std::set<std::string> tables_;
};

bool designates(std::string const& expression, std::string const& name)
{
    std::string const pattern =
        expression.starts_with('/') ? expression + "*" : "/*" + expression + "*";
    return expression.empty() || fnmatch(pattern.c_str(), ("/" + name).c_str(), 0) == 0;
}

bool isBelowOneOf(std::set<std::string> const& names, std::string name)
{
    for (std::size_t slash; (slash = name.rfind('/')) != std::string::npos;) {
        name.resize(slash);
        if (names.contains(name)) {
            return true;
        }
    }
    return false;
}

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static Tree tree;
    Input input(data, size);
    // Up to a NUL, as it comes from a command line.
    std::string const expression = std::string(input.line()).c_str();
    if (std::string_view const lines = input.bytes(size); lines != tree.lines()) {
        tree.make(lines);
    }
    Quask::TableFinder finder;
    require(finder.find(expression.c_str()));
    std::set<std::string> const found(finder.begin(), finder.end());
    require(found.size() == finder.size());
    for (std::string const& name : found) {
        require(tree.tables().contains(name) && designates(expression, name));
    }
    for (std::string const& name : tree.tables()) {
        require(!designates(expression, name) || found.contains(name) || isBelowOneOf(found, name));
    }
    return 0;
}
