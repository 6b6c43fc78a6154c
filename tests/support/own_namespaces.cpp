#include "support/own_namespaces.h"

#include <csignal>
#include <cstdio>
#include <initializer_list>
#include <string>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace QuaskTesting {
namespace {

bool entered = false;

// The processes from the old one down to the test's own:
//
//     the old process      waits for the next
//     its child            has the new namespaces made, and waits for the next
//     process 1 in them    mounts /proc, and reaps whoever loses its parent
//     process 2            returns from enterOwnNamespaces()

void writeFile(char const* path, std::string const& text)
{
    int const file = open(path, O_WRONLY | O_CLOEXEC);
    [[maybe_unused]] ssize_t const written = write(file, text.data(), text.size());
    close(file);
}

// In a new user namespace: the user and the group stay what they are, and are all there is.
void keepUser(uid_t user, gid_t group)
{
    auto const same = [](unsigned id) {
        return std::to_string(id) + " " + std::to_string(id) + " 1";
    };
    writeFile("/proc/self/setgroups", "deny");
    writeFile("/proc/self/uid_map", same(user));
    writeFile("/proc/self/gid_map", same(group));
}

bool makeNamespaces(int flags)
{
    uid_t const user = geteuid();
    gid_t const group = getegid();
    if (unshare(flags) != 0) {
        return false;
    }
    if ((flags & CLONE_NEWUSER) != 0) {
        keepUser(user, group);
    }
    return true;
}

bool mountOwnProc()
{
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) == 0;
}

// The exit status that says how a process ended.
int statusOf(int waited)
{
    if (WIFSIGNALED(waited)) {
        std::fprintf(stderr, "ended by signal %d\n", WTERMSIG(waited));
        return 128 + WTERMSIG(waited);
    }
    return WEXITSTATUS(waited);
}

// Process 1: reaps until the test's process has ended.
[[noreturn]] void reapUntilEndOf(pid_t test)
{
    for (;;) {
        int waited = 0;
        if (waitpid(-1, &waited, 0) == test) {
            _exit(statusOf(waited));
        }
    }
}

[[noreturn]] void passOnEndOf(pid_t child)
{
    int waited = 0;
    waitpid(child, &waited, 0);
    _exit(WIFEXITED(waited) ? WEXITSTATUS(waited) : 1);
}

pid_t forkBoundToParent()
{
    pid_t const pid = fork();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
    }
    return pid;
}

// Returns in process 2, with `entered` set; in the old process only when there is none.
void enter(int flags)
{
    int ready[2];  // a byte when the test's process is about to start
    if (pipe2(ready, O_CLOEXEC) != 0) {
        return;
    }
    pid_t const maker = forkBoundToParent();
    if (maker == 0) {
        pid_t first = -1;
        if (!makeNamespaces(flags) || (first = forkBoundToParent()) < 0) {
            _exit(1);
        }
        if (first != 0) {
            close(ready[1]);
            passOnEndOf(first);
        }
        if (!mountOwnProc() || write(ready[1], "", 1) != 1) {
            _exit(1);
        }
        if (pid_t const test = fork(); test != 0) {
            reapUntilEndOf(test);
        }
        close(ready[0]);
        close(ready[1]);
        entered = true;
        return;
    }
    close(ready[1]);
    char byte = 0;
    bool const isReady = read(ready[0], &byte, 1) == 1;
    close(ready[0]);
    if (isReady) {
        passOnEndOf(maker);
    }
    waitpid(maker, nullptr, 0);
}

}  // namespace

void enterOwnNamespaces()
{
    for (int const user : {0, CLONE_NEWUSER}) {
        if (!entered) {
            enter(CLONE_NEWPID | CLONE_NEWNS | user);
        }
    }
}

bool inOwnNamespaces()
{
    return entered;
}

}  // namespace QuaskTesting
