// crowd PROCESSES LINES: that many processes, each with about that many lines in its maps file.
// Prints "ready" when they are there; they end with its standard input.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Lines that any process has for its program, its libraries and its stack.
constexpr int ownLines = 23;

void becomeMember(int lines)
{
    for (int i = 0; i < lines - ownLines; ++i) {
        // Neighbours of unlike protection are not merged into one line.
        int const protection = i % 2 == 0 ? PROT_READ : PROT_READ | PROT_WRITE;
        mmap(nullptr, 4096, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    }
    for (;;) {
        pause();
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        return 2;
    }
    std::vector<pid_t> members;
    for (int i = 0; i < std::atoi(argv[1]); ++i) {
        pid_t const pid = fork();
        if (pid < 0) {
            std::perror("fork");
            break;
        }
        if (pid == 0) {
            becomeMember(std::atoi(argv[2]));
        }
        members.push_back(pid);
    }
    usleep(300000);  // until the last has its mappings
    std::puts("ready");
    std::fflush(stdout);
    while (getchar() != EOF) {
    }
    for (pid_t const pid : members) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
}
