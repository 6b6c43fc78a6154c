#pragma once

#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/private_root.h"

namespace QuaskTesting {

// The command that runs the real command line on the tables of a private root: the tool's own
// objects, linked with a root directory that is read from the environment. The root warning of the
// client reports and the debug channel are off.
inline Command quask(PrivateRoot const& root, std::vector<std::string> arguments)
{
    Command command;
    command.words = std::move(arguments);
    command.words.insert(command.words.begin(), QUASK_UNDER_TEST);
    command.environment = {{"QUASK_TEST_ROOT", root.path()}, {"J5_CHROOT", "1"}, {"LC_ALL", "C"}};
    command.unset = {"DOVAN_DEBUG", "POSIXLY_CORRECT"};
    return command;
}

}  // namespace QuaskTesting
