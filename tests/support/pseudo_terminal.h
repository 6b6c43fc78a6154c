#pragma once

#include <string>

#include <sys/types.h>
#include <termios.h>

#include "support/child_process.h"

namespace QuaskTesting {

// A program whose standard input and output are a terminal of its own, the one that controls it.
// Its standard error is the same terminal. Ended and reaped with the object if it was not before.
class PseudoTerminal
{
public:
    // Of the command, words and environment count. The size is in characters.
    PseudoTerminal(Command const& command, unsigned short width, unsigned short height);
    PseudoTerminal(PseudoTerminal const&) = delete;
    PseudoTerminal& operator=(PseudoTerminal const&) = delete;
    ~PseudoTerminal();

    pid_t pid() const { return pid_; }

    // What the terminal's driver does with what is typed and printed.
    termios settings() const;

    // As a user who types.
    void type(std::string const& keys) const;

    // As a user who resizes the window.
    void resize(unsigned short width, unsigned short height) const;

    // Waits until the program has printed this since the last call, and returns all that it has
    // printed until then; without it when the program ended before.
    std::string readUntil(std::string const& text);

    // What it has printed since the last call until now.
    std::string readNow();

    // Reads what is left, each line's end as a newline, and reaps the program.
    Finished finish();

private:
    bool readSome();

    int terminal_ = -1;
    pid_t pid_ = -1;
    std::string unread_;
};

}  // namespace QuaskTesting
