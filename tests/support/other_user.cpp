#include "support/other_user.h"

#include <cstdlib>

#include <unistd.h>

namespace QuaskTesting {
namespace {

constexpr unsigned nobody = 65534;

// Where the library that counts complains.
constexpr char const* complaints[2] = {"GCOV_ERROR_FILE", "/dev/null"};

}  // namespace

bool OtherUser::exists()
{
    Command command{.words = {"true"}};
    command.userId = getuid() == 0 ? nobody : 0;
    return run(command).exitStatus == 0;
}

Command OtherUser::command(Command command) const
{
    if (getuid() == 0) {
        command.userId = nobody;
        command.words.at(0) = program_.path();
        command.environment[complaints[0]] = complaints[1];
    }
    return command;
}

void OtherUser::leaveNoCounts()
{
    setenv(complaints[0], complaints[1], 1);
}

}  // namespace QuaskTesting
