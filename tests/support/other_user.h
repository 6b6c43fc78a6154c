#pragma once

#include "support/child_process.h"
#include "support/program_copy.h"

namespace QuaskTesting {

// A user whom permissions bind, and a program that this user can run. When root runs the tests, it
// is one that owns none of their files; else it is who runs them, and a file without permissions is
// as unreadable.
class OtherUser
{
public:
    explicit OtherUser(std::string const& program) : program_(program, "program") {}

    // False where root may not become another user: in a user namespace, for one.
    static bool exists();

    // What the user runs: this command with a copy of the program in place of its first word.
    Command command(Command command) const;

    // For a process that is about to become the user: it cannot write the counts of a build that
    // counts which lines run, and is not to say so on standard error.
    static void leaveNoCounts();

private:
    ProgramCopy program_;
};

}  // namespace QuaskTesting
