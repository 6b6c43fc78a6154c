#pragma once

#include <chrono>
#include <csignal>
#include <optional>
#include <string>

#include <termios.h>

#include "base/descriptor.h"

namespace Quask::Stat {

// The terminal of standard output, taken for a display that is drawn over again and again. What was
// on it comes back at the end, and so do its settings. While the object lives, signals are taken by
// wait() instead of acting at once; a signal that stops the process gives the terminal back for
// that time. One at a time; one thread.
class Screen
{
public:
    enum class Event
    {
        timeout,
        resized,
        quit,        // the user typed q
        terminated,  // by a signal, see end()
    };

    Screen();
    Screen(Screen const&) = delete;
    Screen& operator=(Screen const&) = delete;
    ~Screen();

    // Draws `text`, whole lines, of which only the first `height` are shown.
    void draw(std::string const& text, unsigned height);

    // Waits for what comes first, at the latest until then.
    Event wait(std::chrono::steady_clock::time_point until);

    // Gives the terminal back, and ends the process by the signal after Event::terminated.
    void end();

private:
    void enter();
    void leave();
    std::optional<Event> takeKey();
    std::optional<Event> takeSignal();

    bool isEntered_ = false;
    bool hasKeys_ = false;  // standard input is a terminal
    termios settings_{};    // its former settings
    sigset_t formerMask_{};
    Dovan::Descriptor signals_;
    int signal_ = 0;  // that ended the display
};

}  // namespace Quask::Stat
