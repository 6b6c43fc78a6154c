#pragma once

#include <string>

#include <sys/types.h>

namespace Quask::Stat {

// What /proc/PID/stat says after the command's name, which may hold any characters: fields with a
// blank between two, the process's state first. Empty if the process has ended and its parent has
// been told.
std::string processStatFields(pid_t pid);

}  // namespace Quask::Stat
