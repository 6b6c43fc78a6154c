#include "finder/surroundings.h"

#include <cerrno>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// What the living DescriptorLimit and UnknownType ask for.
std::optional<rlim_t> firstRefused;
std::string nameOfUnknownType;

}  // namespace

// The linker puts these in the place of openat() and readdir() in the code under test.
extern "C" {
int __real_openat(int directory, char const* path, int flags, ...);
dirent* __real_readdir(DIR* dir);

// Files are made by nobody here: there is no mode.
int __wrap_openat(int directory, char const* path, int flags)
{
    if (!firstRefused) {
        return __real_openat(directory, path, flags);
    }
    rlimit former{};
    getrlimit(RLIMIT_NOFILE, &former);
    rlimit const lower{*firstRefused, former.rlim_max};
    setrlimit(RLIMIT_NOFILE, &lower);
    int const opened = __real_openat(directory, path, flags);
    int const error = errno;
    setrlimit(RLIMIT_NOFILE, &former);
    errno = error;
    return opened;
}

dirent* __wrap_readdir(DIR* dir)
{
    dirent* const entry = __real_readdir(dir);
    if (entry != nullptr && entry->d_name == nameOfUnknownType) {
        entry->d_type = DT_UNKNOWN;
    }
    return entry;
}
}

namespace QuaskTesting {

namespace fs = std::filesystem;

std::vector<std::string> namesInOrder(std::string const& directory)
{
    std::vector<std::string> names;
    for (fs::directory_entry const& entry : fs::directory_iterator(directory)) {
        names.push_back(entry.path().filename());
    }
    return names;
}

std::size_t openDescriptors()
{
    // One is the iterator's own.
    return namesInOrder("/proc/self/fd").size() - 1;
}

int descriptorOf(std::string const& path)
{
    for (fs::directory_entry const& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        if (fs::read_symlink(entry.path(), ignored) == fs::canonical(path)) {
            return std::stoi(entry.path().filename());
        }
    }
    return -1;
}

void makeUnreadable(int descriptor)
{
    int const file = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (dup2(file, descriptor) != descriptor) {
        throw std::runtime_error("the directory is not open");
    }
    close(file);
}

DescriptorLimit::DescriptorLimit(unsigned count)
{
    // Descriptors are given out from the lowest free number on.
    std::vector<int> taken;
    while (taken.size() <= count) {
        taken.push_back(dup(STDERR_FILENO));
    }
    for (int const descriptor : taken) {
        close(descriptor);
    }
    firstRefused = static_cast<rlim_t>(taken.back());
}

DescriptorLimit::~DescriptorLimit()
{
    firstRefused.reset();
}

UnknownType::UnknownType(std::string const& name)
{
    nameOfUnknownType = name;
}

UnknownType::~UnknownType()
{
    nameOfUnknownType.clear();
}

OrdinaryUser::OrdinaryUser() : wasRoot_(geteuid() == 0)
{
    constexpr uid_t nobody = 65534;
    if (wasRoot_) {
        [[maybe_unused]] int const result = seteuid(nobody);
    }
}

OrdinaryUser::~OrdinaryUser()
{
    if (wasRoot_) {
        [[maybe_unused]] int const result = seteuid(0);
        // Another user for a while, the process could no longer be looked into by its tools.
        prctl(PR_SET_DUMPABLE, 1);
    }
}

bool OrdinaryUser::succeeded() const
{
    return geteuid() != 0;
}

}  // namespace QuaskTesting
