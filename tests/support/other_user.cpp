#include "support/other_user.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <sys/stat.h>

#include "support/become_user.h"

namespace QuaskTesting {
namespace {

constexpr unsigned nobody = 65534;
constexpr char const* placeOfCounts = "GCOV_PREFIX";

}  // namespace

OtherUser::OtherUser() : counts_("/tmp/quask-test.XXXXXX")
{
    if (mkdtemp(counts_.data()) == nullptr || chmod(counts_.c_str(), 0777) != 0) {
        throw std::runtime_error("no directory for another user");
    }
}

OtherUser::OtherUser(std::string const& program) : OtherUser()
{
    program_.emplace(program, "program");
}

OtherUser::~OtherUser()
{
    std::error_code ignored;
    std::filesystem::remove_all(counts_, ignored);
}

bool OtherUser::exists()
{
    Command command{.words = {"true"}};
    command.userId = nobody;
    return run(command).exitStatus == 0;
}

Command OtherUser::command(Command command) const
{
    command.userId = nobody;
    command.words.at(0) = program_.value().path();
    command.environment[placeOfCounts] = counts_;
    return command;
}

bool OtherUser::become() const
{
    setenv(placeOfCounts, counts_.c_str(), 1);
    return becomeUser(nobody);
}

}  // namespace QuaskTesting
