#pragma once

#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace QuaskTesting {

// How a program ended and what it wrote.
struct Finished
{
    int exitStatus = -1;  // -1 when a signal ended it
    int signal = 0;       // 0 when it exited
    std::string out;
    std::string err;
};

// A program to run: its path and arguments, and what differs from this process's surroundings.
struct Command
{
    std::vector<std::string> words;
    std::map<std::string, std::string> environment = {};  // set in the end
    std::vector<std::string> unset = {};                  // variables taken away first
    unsigned userId = 0;     // run as this user, by becomeUser(), if it is not 0
    int outDescriptor = -1;  // standard output goes here instead of into Finished::out
    int errDescriptor = -1;  // standard error likewise, instead of into Finished::err
    std::string workingDirectory = {};
    std::map<int, unsigned long> limits = {};  // RLIMIT_... to soft and hard limit
    std::vector<int> lacking = {};             // CAP_... that root has and the program has not
};

// A running program of the test's own, with its standard input, output and error in pipes. Ended
// and reaped at the end if it was not before. No core is dumped.
class ChildProcess
{
public:
    explicit ChildProcess(Command const& command);
    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;
    ~ChildProcess();

    pid_t pid() const { return pid_; }

    // Waits for a line on its standard output; the line without its newline, empty at the end.
    std::string readLine();

    void closeInput();
    void kill(int signal) const;

    // Closes its standard input, reads until it ends and reaps it.
    Finished finish();

private:
    pid_t pid_ = -1;
    int in_ = -1;
    int out_ = -1;
    int err_ = -1;
    bool reaped_ = false;
};

// Runs the program to its end.
Finished run(Command const& command);

}  // namespace QuaskTesting
