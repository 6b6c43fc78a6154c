#include "support/program_copy.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <sys/stat.h>

#include "support/own_namespaces.h"

namespace QuaskTesting {

ProgramCopy::ProgramCopy(std::string const& program, std::string const& relative)
    : directory_("/tmp/quask-test.XXXXXX")
{
    if (mkdtemp(directory_.data()) == nullptr || chmod(directory_.c_str(), 0755) != 0) {
        throw std::runtime_error("no directory for a program");
    }
    if (inOwnNamespaces()) {
        fileSystem_.emplace(directory_, std::filesystem::file_size(program) + 1024 * 1024);
    }
    path_ = directory_ + "/" + relative;
    std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
    std::filesystem::copy_file(program, path_);
    chmod(path_.c_str(), 0755);
}

ProgramCopy::~ProgramCopy()
{
    fileSystem_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

}  // namespace QuaskTesting
