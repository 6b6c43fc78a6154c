#include "stat/process_info.h"

#include <array>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <sstream>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "stat/process_stat.h"

namespace Quask::Stat {
namespace {

std::string userOf(pid_t pid)
{
    struct stat status = {};
    if (stat(("/proc/" + std::to_string(pid)).c_str(), &status) != 0) {
        return {};
    }
    passwd const* const entry = getpwuid(status.st_uid);
    return entry == nullptr ? std::to_string(status.st_uid) : entry->pw_name;
}

// When the machine started, in seconds since 1970; 0 when that is not known.
std::time_t bootTime()
{
    std::ifstream file("/proc/stat");
    std::string name;
    std::time_t time = 0;
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        if (fields >> name && name == "btime" && fields >> time) {
            return time;
        }
    }
    return 0;
}

// When the process started, in ticks since the machine did; 0 when that is not known.
std::uint64_t startTicks(pid_t pid)
{
    constexpr int fieldsBefore = 19;  // the state is the first of them
    std::istringstream fields(processStatFields(pid));
    std::string skipped;
    for (int i = 0; i < fieldsBefore; ++i) {
        fields >> skipped;
    }
    std::uint64_t ticks = 0;
    fields >> ticks;
    return ticks;
}

std::string localTime(std::time_t time)
{
    std::tm parts{};
    std::array<char, 64> text{};
    localtime_r(&time, &parts);
    std::size_t const length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
    return {text.data(), length};
}

}  // namespace

ProcessInfo processInfo(pid_t pid)
{
    ProcessInfo info{userOf(pid), {}};
    std::time_t const boot = bootTime();
    std::uint64_t const ticks = startTicks(pid);
    if (boot != 0 && ticks != 0) {
        auto const perSecond = static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
        info.since = localTime(boot + static_cast<std::time_t>(ticks / perSecond));
    }
    return info;
}

}  // namespace Quask::Stat
