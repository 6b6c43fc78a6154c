#include "stat/process_stat.h"

#include <cstddef>
#include <fstream>
#include <string_view>

namespace Quask::Stat {

std::string processStatFields(pid_t pid)
{
    constexpr std::string_view nameEnd = ") ";
    std::string line;
    std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/stat"), line);
    std::size_t const end = line.rfind(nameEnd);
    return end == std::string::npos ? std::string() : line.substr(end + nameEnd.size());
}

}  // namespace Quask::Stat
