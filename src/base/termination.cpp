#include "base/termination.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>

#include <unistd.h>

namespace Dovan::Termination {
namespace {

struct EndingSignal
{
    int number;
    timer_t deadline;  // sends the signal again
};

// Set up before any of the handlers is.
std::array<EndingSignal, 3> endingSignals{{{SIGHUP, {}}, {SIGINT, {}}, {SIGTERM, {}}}};
bool (*completeOutput)() = nullptr;

std::sig_atomic_t volatile due = 0;  // the signal that has come; 0 before

[[noreturn]] void endBy(int number)
{
    static_cast<void>(std::signal(number, SIG_DFL));
    static_cast<void>(raise(number));
    // Only the first process of a container gets here, which no signal ends by its default action.
    _exit(128 + number);
}

void startDeadline(int number)
{
    itimerspec aSecond{};
    aSecond.it_value.tv_sec = 1;
    for (EndingSignal const& signal : endingSignals) {
        if (signal.number == number) {
            timer_settime(signal.deadline, 0, &aSecond, nullptr);
        }
    }
}

void onSignal(int number)
{
    int const error = errno;
    if (due != 0) {
        endBy(number);
    }
    due = number;
    startDeadline(number);
    if (completeOutput()) {
        endBy(number);
    }
    errno = error;
}

bool createDeadline(EndingSignal& signal)
{
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = signal.number;
    return timer_create(CLOCK_MONOTONIC, &event, &signal.deadline) == 0;
}

}  // namespace

void prepare(bool (*complete)())
{
    completeOutput = complete;
    for (EndingSignal& signal : endingSignals) {
        struct sigaction action
        {};
        sigaction(signal.number, nullptr, &action);
        // Without a deadline a reader that takes nothing could block the process: then the signal
        // keeps its default action.
        if (action.sa_handler != SIG_DFL || !createDeadline(signal)) {
            continue;
        }
        action.sa_handler = onSignal;
        // Another one may come while the handler runs, and interrupts a write that waits.
        action.sa_flags = SA_NODEFER;
        sigemptyset(&action.sa_mask);
        sigaction(signal.number, &action, nullptr);
    }
}

void endIfDue()
{
    if (due != 0) {
        endBy(due);
    }
}

}  // namespace Dovan::Termination
