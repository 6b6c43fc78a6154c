#pragma once

#include <string>

#include <sys/types.h>

namespace Quask::Stat {

// What /proc/PID/stat says after the command's name, which may hold any characters: fields with a
// blank between two, the process's state first. Empty if the file cannot be read: the process has
// ended and its parent has been told, or the system hides it.
std::string processStatFields(pid_t pid);

}  // namespace Quask::Stat
