#include "support/own_namespaces.h"

#include <csignal>
#include <cstdio>
#include <initializer_list>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/become_user.h"

namespace QuaskTesting {
namespace {

bool entered = false;

// The processes from the old one down to the test's own:
//
//     the old process      waits for the next
//     its child            has the new namespaces made, and waits for the next
//     process 1 in them    mounts /proc, and reaps orphans until the next ends
//     process 2            returns from enterOwnNamespaces()

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
    int waited = 0;
    while (waitpid(-1, &waited, 0) != test) {
    }
    _exit(statusOf(waited));
}

[[noreturn]] void passOnEndOf(pid_t child)
{
    int waited = 0;
    waitpid(child, &waited, 0);
    _exit(WIFEXITED(waited) ? WEXITSTATUS(waited) : 1);
}

// Ends the process that calls this when it has failed.
pid_t forkBoundToParent()
{
    pid_t const pid = fork();
    if (pid < 0) {
        _exit(1);
    }
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
    }
    return pid;
}

// In the child of the old process. Returns in process 2, and says so in the pipe.
void makeNamespaces(bool asUser, int const (&ready)[2])
{
    if ((asUser && !enterUserNamespace(geteuid())) || unshare(CLONE_NEWPID | CLONE_NEWNS) != 0) {
        _exit(1);
    }
    if (pid_t const first = forkBoundToParent(); first != 0) {
        close(ready[1]);
        passOnEndOf(first);
    }
    if (!mountOwnProc()) {
        _exit(1);
    }
    if (pid_t const test = forkBoundToParent(); test != 0) {
        close(ready[1]);
        reapUntilEndOf(test);
    }
    entered = write(ready[1], "", 1) == 1;
    close(ready[0]);
    close(ready[1]);
}

// Returns in process 2, with `entered` set; in the old process only where there is none.
void enter(bool asUser)
{
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0) {
        return;
    }
    pid_t const maker = forkBoundToParent();
    if (maker == 0) {
        makeNamespaces(asUser, ready);
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
    for (bool const asUser : {false, true}) {
        if (!entered) {
            enter(asUser);
        }
    }
}

bool inOwnNamespaces()
{
    return entered;
}

}  // namespace QuaskTesting
