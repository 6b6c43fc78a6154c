// measured FILE SECONDS MEBIBYTES COMMAND...
//
// Runs the command and writes one line into FILE: its exit status (128 more than the number of the
// signal that ended it: SIGKILL when it was still there after so many seconds), the milliseconds
// that it took, those of the processor, and its largest resident memory in KiB, mapped files
// included. Its address space is limited to so many MiB, so that the machine survives it.

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <poll.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void become(char** command, rlim_t bytes)
{
    rlimit const memory{bytes, bytes};
    rlimit const core{0, 0};
    setrlimit(RLIMIT_AS, &memory);
    setrlimit(RLIMIT_CORE, &core);
    execvp(command[0], command);
    _exit(127);
}

// Whether the process ends within this time.
bool endsWithin(pid_t process, int seconds)
{
    auto const descriptor = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    pollfd end{descriptor, POLLIN, 0};
    bool const ended = poll(&end, 1, 1000 * seconds) > 0;
    close(descriptor);
    return ended;
}

long milliseconds(timeval const& time)
{
    return time.tv_sec * 1000 + time.tv_usec / 1000;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 5) {
        std::fputs("usage: measured FILE SECONDS MEBIBYTES COMMAND...\n", stderr);
        return 2;
    }
    // Or it would hold the inputs of the programs that were started before it open.
    close_range(STDERR_FILENO + 1, ~0U, 0);
    using Clock = std::chrono::steady_clock;
    auto const start = Clock::now();
    pid_t const process = fork();
    if (process == 0) {
        become(argv + 4, std::strtoul(argv[3], nullptr, 10) << 20);
    }
    if (!endsWithin(process, std::atoi(argv[2]))) {
        kill(process, SIGKILL);
    }
    int status = 0;
    rusage usage{};
    wait4(process, &status, 0, &usage);
    auto const time =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    std::FILE* const file = std::fopen(argv[1], "w");
    if (file == nullptr) {
        std::perror(argv[1]);
        return 1;
    }
    std::fprintf(file, "%d %lld %ld %ld\n",
                 WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status),
                 static_cast<long long>(time),
                 milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime), usage.ru_maxrss);
    std::fclose(file);
}
