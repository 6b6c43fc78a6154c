// nested_client DIRECTORY DEPTH
//
// Makes DEPTH directories one inside the other below DIRECTORY, with names as long as can be, and
// in each a file "slots" that it maps. Prints "ready", and ends with its standard input.

#include <cstdio>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t longestName = 255;

// In the directory that the process is in: paths soon become longer than a call takes.
bool mapSlots()
{
    int const file = open("slots", O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    bool const mapped = file >= 0 && ftruncate(file, 1) == 0 &&
                        mmap(nullptr, 1, PROT_READ, MAP_SHARED, file, 0) != MAP_FAILED;
    close(file);
    return mapped;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: nested_client DIRECTORY DEPTH\n", stderr);
        return 2;
    }
    std::string const name(longestName, 'd');
    bool sound = chdir(argv[1]) == 0;
    for (int depth = std::atoi(argv[2]); sound && depth > 0; --depth) {
        sound = mkdir(name.c_str(), 0700) == 0 && chdir(name.c_str()) == 0 && mapSlots();
    }
    if (!sound) {
        std::perror("nested_client");
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
}
