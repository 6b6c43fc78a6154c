#pragma once

#include <string>

#include <sys/types.h>

namespace Quask::Stat {

// What is known of a process beside what it has mapped.
struct ProcessInfo
{
    std::string user;   // the name, or the number of one without a name; empty if it has ended
    std::string since;  // when it started, local time, as "2026-11-21 17:05:00"; likewise
};

ProcessInfo processInfo(pid_t pid);

}  // namespace Quask::Stat
