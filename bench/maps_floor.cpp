// maps_floor: opens and reads the maps file of every process and does nothing with it. What the
// client report's time is divided by.

#include <cctype>
#include <cstdio>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

int main()
{
    static char buffer[65536];
    DIR* const proc = opendir("/proc");
    if (proc == nullptr) {
        return 1;
    }
    unsigned long total = 0;
    while (dirent const* const entry = readdir(proc)) {
        if (std::isdigit(static_cast<unsigned char>(entry->d_name[0])) == 0) {
            continue;
        }
        char path[300];
        std::snprintf(path, sizeof path, "/proc/%s/maps", entry->d_name);
        int const descriptor = open(path, O_RDONLY);
        if (descriptor < 0) {
            continue;
        }
        for (ssize_t count = 0; (count = read(descriptor, buffer, sizeof buffer)) > 0;) {
            total += static_cast<unsigned long>(count);
        }
        close(descriptor);
    }
    closedir(proc);
    return total == 0 ? 1 : 0;
}
