#pragma once

#include <optional>
#include <string>

#include "support/child_process.h"
#include "support/program_copy.h"

namespace QuaskTesting {

// A user whom permissions bind and who cannot look into other users' processes, and a copy of a
// program that this user can run. When root runs the tests, the user owns none of their files.
class OtherUser
{
public:
    // One who runs no program: for become().
    OtherUser();
    explicit OtherUser(std::string const& program);
    OtherUser(OtherUser const&) = delete;
    OtherUser& operator=(OtherUser const&) = delete;
    ~OtherUser();

    // False where the system lets no process become another user.
    static bool exists();

    // What the user runs: this command with the copy of the program in place of its first word.
    Command command(Command command) const;

    // Makes this process, which has no other threads, the user's. False where exists() is.
    bool become() const;

private:
    std::optional<ProgramCopy> program_;

    // In a build that counts which lines run, the user cannot write the counts where they belong.
    // They go here instead, and are lost.
    std::string counts_;
};

}  // namespace QuaskTesting
