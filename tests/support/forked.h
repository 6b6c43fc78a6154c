#pragma once

#include <csignal>
#include <stdexcept>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace QuaskTesting {

// This program a second time, from here on: `body` runs in a process of its own, with the signals
// as a shell starts a program, and ends it with the status that it returns. Ended and reaped with
// the object if it was not before, and ended with the program. No core is dumped.
class Forked
{
public:
    template <typename Body>
    explicit Forked(Body body) : pid_(fork())
    {
        if (pid_ < 0) {
            throw std::runtime_error("no process");
        }
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            for (int const number : {SIGHUP, SIGINT, SIGPIPE, SIGTERM, SIGXFSZ}) {
                static_cast<void>(std::signal(number, SIG_DFL));
            }
            rlimit const none{0, 0};
            setrlimit(RLIMIT_CORE, &none);
            _exit(body());
        }
    }
    Forked(Forked const&) = delete;
    Forked& operator=(Forked const&) = delete;
    ~Forked()
    {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }

    pid_t pid() const { return pid_; }
    void kill(int number) const { ::kill(pid_, number); }

    // Waits for its end: the exit status, or the number of the signal that ended it, negative.
    int end()
    {
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    }

private:
    pid_t pid_;
};

// What `body` ends with; see Forked::end().
template <typename Body>
int endOf(Body body)
{
    return Forked(body).end();
}

}  // namespace QuaskTesting
