#pragma once

#include <fstream>
#include <limits>
#include <string>

#include <sys/types.h>

namespace QuaskTesting {

// What the system says of the process under this name; empty when it says nothing.
inline std::string statusField(pid_t pid, std::string const& name)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string found;
    std::string value;
    while (found != name + ":" && status >> found >> value) {
        status.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    return status ? value : std::string();
}

// Whether the process has ended; it need not have been reaped.
inline bool hasEnded(pid_t pid)
{
    std::string const state = statusField(pid, "State");
    return state.empty() || state == "Z";
}

// Returns when the process waits for something, or has ended.
inline void awaitWaiting(pid_t pid)
{
    while (!hasEnded(pid) && statusField(pid, "State") != "S") {
    }
}

// Returns when the process has gone to wait so many times more, or has ended.
inline void awaitWaits(pid_t pid, unsigned long count)
{
    auto const waits = [pid] {
        std::string const number = statusField(pid, "voluntary_ctxt_switches");
        return number.empty() ? 0 : std::stoul(number);
    };
    for (unsigned long const before = waits(); !hasEnded(pid) && waits() < before + count;) {
    }
}

}  // namespace QuaskTesting
