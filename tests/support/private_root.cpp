#include "support/private_root.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "support/root_path.h"

namespace {

std::string& currentRoot()
{
    static std::string root = "/nonexistent/no-private-root";
    return root;
}

}  // namespace

namespace Quask {

std::string const& rootDirectory()
{
    return currentRoot();
}

}  // namespace Quask

namespace QuaskTesting {

PrivateRoot::PrivateRoot()
{
    std::string pattern = std::filesystem::exists("/dev/shm") ? "/dev/shm/quask-test.XXXXXX"
                                                              : "/tmp/quask-test.XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no directory for the test's tables");
    }
    path_ = pattern;
    currentRoot() = path_;
}

PrivateRoot::~PrivateRoot()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string PrivateRoot::makeDirectory(std::string const& relative) const
{
    std::string const directory = path_ + "/" + relative;
    std::filesystem::create_directories(directory);
    return directory;
}

std::string PrivateRoot::writeFile(std::string const& relative, std::string const& contents) const
{
    std::string const path = path_ + "/" + relative;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
    return path;
}

void PrivateRoot::setRootDirectory(std::string const& relative) const
{
    currentRoot() = path_ + "/" + relative;
}

}  // namespace QuaskTesting
