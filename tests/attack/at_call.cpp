// at_call NUMBER ACTION COMMAND...
// at_call everyNUMBER ACTION COMMAND...
// at_call count COMMAND...
//
// Runs the command and stops it before its system call of this number, counted from 1; with "every"
// before that and each so many calls later. Then runs ACTION, a shell command, and lets it go on.
// So what changes between two steps of the command changes at exactly this point, each time. Ends
// as the command does, a signal as 128 more; with 125 when there were fewer calls. With "count"
// runs the command without its output and prints how many there were.
//
// A command that replaces itself (env, setpriv) is counted from its last exec on.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int tooFewCalls = 125;

[[noreturn]] void become(char** command, bool silent)
{
    if (silent) {
        int const nowhere = open("/dev/null", O_RDWR);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
    }
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    raise(SIGSTOP);
    execvp(command[0], command);
    _exit(127);
}

bool entersCall(pid_t process)
{
    __ptrace_syscall_info info{};
    ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info);
    return info.op == PTRACE_SYSCALL_INFO_ENTRY;
}

int exitStatus(int status)
{
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// What is done at a call, and when.
struct Plan
{
    unsigned long call;
    bool again;          // at multiples of `call`, too
    char const* action;  // null: nothing

    bool isDue(unsigned long calls) const
    {
        return action != nullptr && (again ? calls % call == 0 : calls == call);
    }
};

// Follows the stopped process to its end; the status of wait(). `calls` is how many it made.
int follow(pid_t process, Plan const& plan, unsigned long& calls)
{
    int status = 0;
    int signal = 0;
    calls = 0;
    for (;;) {
        ptrace(PTRACE_SYSCALL, process, nullptr, signal);
        if (waitpid(process, &status, 0) != process || !WIFSTOPPED(status)) {
            return status;
        }
        signal = 0;
        if (status >> 8 == (SIGTRAP | PTRACE_EVENT_EXEC << 8)) {
            calls = 0;
        } else if (WSTOPSIG(status) != (SIGTRAP | 0x80)) {
            signal = WSTOPSIG(status);
        } else if (entersCall(process)) {
            ++calls;
            if (plan.isDue(calls) && std::system(plan.action) != 0) {
                std::fprintf(stderr, "at_call: failed: %s\n", plan.action);
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    std::string_view const when = argc > 1 ? argv[1] : "";
    bool const counts = when == "count";
    if (argc < (counts ? 3 : 4)) {
        std::fputs("usage: at_call [every]NUMBER ACTION COMMAND...\n", stderr);
        return 2;
    }
    bool const again = when.starts_with("every");
    Plan const plan{
        counts ? 0 : std::strtoul(argv[1] + (again ? std::strlen("every") : 0), nullptr, 10), again,
        counts ? nullptr : argv[2]};
    pid_t const process = fork();
    if (process == 0) {
        become(argv + (counts ? 2 : 3), counts);
    }
    int status = 0;
    waitpid(process, &status, 0);
    ptrace(PTRACE_SETOPTIONS, process, nullptr,
           PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL);
    unsigned long calls = 0;
    status = follow(process, plan, calls);
    if (counts) {
        std::printf("%lu\n", calls);
        return 0;
    }
    return calls < plan.call ? tooFewCalls : exitStatus(status);
}
