#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace QuaskTesting {

// From now on the calling process's command line has `size` bytes, all of them zero, that take no
// memory. False when the kernel refuses it (it does so unless it is built with
// CONFIG_CHECKPOINT_RESTORE).
inline bool showEndlessCommandLine(std::size_t size)
{
    void* const area =
        mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (area == MAP_FAILED) {
        return false;
    }
    // Of /proc/self/stat, the fields from the third on: those before may hold spaces.
    std::ifstream file("/proc/self/stat");
    std::string line;
    std::getline(file, line);
    std::istringstream rest(line.substr(std::min(line.rfind(')') + 1, line.size())));
    std::vector<std::string> fields;
    for (std::string field; rest >> field;) {
        fields.push_back(field);
    }
    if (fields.size() < 49) {
        return false;
    }
    auto const address = [&fields](std::size_t number) {
        return std::stoull(fields[number - 3]);  // counted as in proc(5)
    };
    prctl_mm_map map{};
    map.start_code = address(26);
    map.end_code = address(27);
    map.start_stack = address(28);
    map.start_data = address(45);
    map.end_data = address(46);
    map.start_brk = address(47);
    map.brk = reinterpret_cast<std::uintptr_t>(sbrk(0));
    map.arg_start = reinterpret_cast<std::uintptr_t>(area);
    map.arg_end = map.arg_start + size;
    map.env_start = address(50);
    map.env_end = address(51);
    map.exe_fd = ~0u;  // as it is
    return prctl(PR_SET_MM, PR_SET_MM_MAP, &map, sizeof map, 0) == 0;
}

}  // namespace QuaskTesting
