#include "stat/screen.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iostream>
#include <string_view>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace Quask::Stat {
namespace {

// Sequences that all terminals in use know: the other display, the cursor, erasing.
constexpr std::string_view enterDisplay = "\033[?1049h\033[?25l";
constexpr std::string_view leaveDisplay = "\033[?25h\033[?1049l";
constexpr std::string_view toTheTop = "\033[H";
constexpr std::string_view eraseLine = "\033[K";
constexpr std::string_view eraseBelow = "\033[J";

sigset_t handledSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (int const number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP, SIGCONT, SIGWINCH}) {
        sigaddset(&set, number);
    }
    return set;
}

}  // namespace

Screen::Screen() : hasKeys_(isatty(STDIN_FILENO) == 1)
{
    sigset_t const set = handledSignals();
    sigprocmask(SIG_BLOCK, &set, &formerMask_);
    signals_ = Dovan::Descriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    enter();
}

Screen::~Screen()
{
    leave();
    sigprocmask(SIG_SETMASK, &formerMask_, nullptr);
}

void Screen::enter()
{
    if (hasKeys_ && tcgetattr(STDIN_FILENO, &settings_) == 0) {
        termios direct = settings_;
        direct.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);  // Ctrl-C remains a signal
        // The terminal's driver throws away what is on its way after it has sent a signal: that
        // could be what leaves the display.
        direct.c_lflag |= NOFLSH;
        direct.c_cc[VMIN] = 1;
        direct.c_cc[VTIME] = 0;
        tcsetattr(STDIN_FILENO, TCSADRAIN, &direct);
    }
    std::cout << enterDisplay << std::flush;
    isEntered_ = true;
}

void Screen::leave()
{
    if (!isEntered_) {
        return;
    }
    std::cout << leaveDisplay << std::flush;
    if (hasKeys_) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &settings_);
    }
    isEntered_ = false;
}

void Screen::draw(std::string const& text, unsigned height)
{
    std::string drawn(toTheTop);
    std::size_t start = 0;
    for (unsigned line = 0; line < height && start < text.size(); ++line) {
        std::size_t const end = std::min(text.find('\n', start), text.size());
        drawn.append(line == 0 ? "" : "\n").append(text, start, end - start).append(eraseLine);
        start = end + 1;
    }
    std::cout << drawn << eraseBelow << std::flush;
}

Screen::Event Screen::wait(std::chrono::steady_clock::time_point until)
{
    using namespace std::chrono;
    for (;;) {
        auto const left = ceil<milliseconds>(until - steady_clock::now()).count();
        if (left <= 0) {
            return Event::timeout;
        }
        std::array<pollfd, 2> waited{pollfd{signals_.number(), POLLIN, 0},
                                     pollfd{hasKeys_ ? STDIN_FILENO : -1, POLLIN, 0}};
        poll(waited.data(), waited.size(), static_cast<int>(left));
        // A signal may come while poll() looks for a key that is typed after it.
        std::optional<Event> event = takeSignal();
        if (!event && waited[1].revents != 0) {
            event = takeKey();
        }
        if (event) {
            return *event;
        }
    }
}

std::optional<Screen::Event> Screen::takeKey()
{
    char key = 0;
    // At the end of the input nobody can type q any more.
    if (read(STDIN_FILENO, &key, 1) != 1 || key == 'q' || key == 'Q') {
        return Event::quit;
    }
    return std::nullopt;
}

std::optional<Screen::Event> Screen::takeSignal()
{
    signalfd_siginfo info{};
    if (read(signals_.number(), &info, sizeof info) != sizeof info) {
        return std::nullopt;
    }
    signal_ = static_cast<int>(info.ssi_signo);
    switch (signal_) {
        case SIGWINCH:
            return Event::resized;
        case SIGTSTP:
            leave();
            static_cast<void>(raise(SIGSTOP));
            enter();
            return Event::resized;
        case SIGCONT:
            return Event::resized;
        default:
            return Event::terminated;
    }
}

void Screen::end()
{
    leave();
    // All is on the terminal: there is nothing that a handler would have to bring to its end.
    static_cast<void>(std::signal(signal_, SIG_DFL));
    sigprocmask(SIG_SETMASK, &formerMask_, nullptr);
    static_cast<void>(raise(signal_));
}

}  // namespace Quask::Stat
