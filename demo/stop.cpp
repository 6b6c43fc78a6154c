#include "stop.h"

#include <csignal>

#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Demo {

Stop::Stop()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, signal);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGTTIN, SIG_IGN);  // in the background of a terminal: read fails instead
    watched_[0] = {signalfd(-1, &signals, SFD_CLOEXEC), POLLIN, 0};

    struct stat status = {};
    bool const hasPartner =
        fstat(STDIN_FILENO, &status) == 0 &&
        (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) || isatty(STDIN_FILENO) != 0);
    watched_[1] = {hasPartner ? STDIN_FILENO : -1, POLLIN, 0};
}

bool Stop::comesBefore(Clock::time_point time)
{
    for (;;) {
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(time - Clock::now()).count();
        int const ready = poll(watched_, 2, left > 0 ? static_cast<int>(left) : 0);
        if (ready > 0 && (watched_[0].revents != 0 || inputEnded())) {
            return true;
        }
        if (ready == 0) {
            return false;
        }
    }
}

bool Stop::inputEnded()
{
    char ignored[256];
    ssize_t const got = read(STDIN_FILENO, ignored, sizeof ignored);
    if (got < 0) {
        watched_[1].fd = -1;
    }
    return got == 0;
}

}  // namespace Demo
