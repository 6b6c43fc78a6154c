// Maps files and keeps them mapped, as a client of a table does:
//
//     mapping_client [--as NAME | --secret | --churn] FILE:MODE...
//
// MODE says how each FILE is mapped: "r", or "rw" for writable. A file without bytes has a page
// mapped all the same. NAME is on the process's command line in place of the program's
// path. With --secret, others may look into the process only by a privilege (CAP_SYS_PTRACE), even
// those of the same user. With --churn, it starts processes that inherit its mappings and end at
// once, some hundred to some thousand per second. Prints "ready" when all files are mapped, and
// ends with its standard input. Status 1, with a line on standard error, when a file cannot be
// mapped.

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool map(std::string_view argument)
{
    std::size_t const colon = std::min(argument.rfind(':'), argument.size());
    std::string const path(argument.substr(0, colon));
    bool const writable = argument.substr(colon) == ":rw";
    int const file = open(path.c_str(), writable ? O_RDWR : O_RDONLY);
    struct stat status
    {};
    if (file < 0 || fstat(file, &status) != 0) {
        return false;
    }
    auto const size = static_cast<std::size_t>(std::max<off_t>(status.st_size, 1));
    int const protection = writable ? PROT_READ | PROT_WRITE : PROT_READ;
    void* const address = mmap(nullptr, size, protection, MAP_SHARED, file, 0);
    close(file);
    return address != MAP_FAILED;
}

// Starts this program afresh under another name. Returns only when that fails.
void restartAs(char* name, char** arguments, char** end)
{
    std::vector<char*> words{name};
    words.insert(words.end(), arguments, end);
    words.push_back(nullptr);
    execv("/proc/self/exe", words.data());
}

// A few processes at a time, so that there are always some that are just ending.
void startAndReap()
{
    for (int i = 0; i < 4; ++i) {
        if (fork() == 0) {
            _exit(0);
        }
    }
    while (waitpid(-1, nullptr, 0) > 0) {
    }
}

bool inputHasEnded()
{
    pollfd input{0, POLLIN, 0};
    return poll(&input, 1, 0) > 0 && std::getchar() == EOF;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc > 2 && std::string_view(argv[1]) == "--as") {
        restartAs(argv[2], argv + 3, argv + argc);
        std::perror("cannot restart");
        return 1;
    }
    std::string_view const option = argc > 1 ? argv[1] : "";
    bool const isSecret = option == "--secret";
    bool const churns = option == "--churn";
    if (isSecret) {
        prctl(PR_SET_DUMPABLE, 0);
    }
    for (int i = isSecret || churns ? 2 : 1; i < argc; ++i) {
        if (!map(argv[i])) {
            std::perror(argv[i]);
            return 1;
        }
    }
    std::puts("ready");
    std::fflush(stdout);
    while (churns && !inputHasEnded()) {
        startAndReap();
    }
    while (!churns && std::getchar() != EOF) {
    }
    return 0;
}
