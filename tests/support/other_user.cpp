#include "support/other_user.h"

#include <cstdlib>

#include "support/become_user.h"

namespace QuaskTesting {
namespace {

constexpr unsigned nobody = 65534;

// In a build that counts which lines run, the user cannot write the counts. What would be said
// about that goes there, and not to standard error, which belongs to the tests.
constexpr char const* complaints = "GCOV_ERROR_FILE";
constexpr char const* nowhere = "/dev/null";

}  // namespace

bool OtherUser::exists()
{
    Command command{.words = {"true"}};
    command.userId = nobody;
    return run(command).exitStatus == 0;
}

Command OtherUser::command(Command command) const
{
    command.userId = nobody;
    command.words.at(0) = program_.path();
    command.environment[complaints] = nowhere;
    return command;
}

bool OtherUser::become()
{
    setenv(complaints, nowhere, 1);
    return becomeUser(nobody);
}

}  // namespace QuaskTesting
