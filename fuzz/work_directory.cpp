#include "work_directory.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "support/root_path.h"

namespace QuaskFuzzing {
namespace {

class Directory
{
public:
    Directory()
    {
        char const* const parent = std::getenv("TMPDIR");
        path_ = std::string(parent == nullptr ? "/dev/shm" : parent) + "/quask-fuzz.XXXXXX";
        if (mkdtemp(path_.data()) == nullptr) {
            throw std::runtime_error("cannot make " + path_);
        }
    }
    Directory(Directory const&) = delete;
    Directory& operator=(Directory const&) = delete;

    ~Directory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    std::string const& path() const { return path_; }

private:
    std::string path_;
};

}  // namespace

std::string const& workDirectory()
{
    static Directory const directory;
    return directory.path();
}

}  // namespace QuaskFuzzing

std::string const& Quask::rootDirectory()
{
    return QuaskFuzzing::workDirectory();
}
