#include "support/child_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <elf.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/become_user.h"

namespace QuaskTesting {
namespace {

struct Pipe
{
    Pipe()
    {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        readEnd = ends[0];
        writeEnd = ends[1];
    }

    int readEnd;
    int writeEnd;
};

void closeOnce(int& descriptor)
{
    if (descriptor >= 0) {
        close(descriptor);
        descriptor = -1;
    }
}

void setLimit(int resource, unsigned long value)
{
    rlimit const limit{value, value};
    setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

// What runs a program that was built for another processor, as the tests were: the first words of
// its command line, none for a program of this machine or in any other build.
std::vector<char*> emulatorFor([[maybe_unused]] std::string const& program)
{
    std::vector<char*> words;
#if defined(QUASK_TEST_EMULATOR)
    static char const* const emulator[] = {QUASK_TEST_EMULATOR};
    Elf64_Ehdr header{};
    std::ifstream(program, std::ios::binary).read(reinterpret_cast<char*>(&header), sizeof header);
    if (header.e_machine == EM_AARCH64) {
        for (char const* const word : emulator) {
            words.push_back(const_cast<char*>(word));
        }
    }
#endif
    return words;
}

// In the new process: never returns.
[[noreturn]] void become(Command const& command, Pipe const& in, Pipe const& out, Pipe const& err)
{
    dup2(in.readEnd, STDIN_FILENO);
    dup2(command.outDescriptor >= 0 ? command.outDescriptor : out.writeEnd, STDOUT_FILENO);
    dup2(command.errDescriptor >= 0 ? command.errDescriptor : err.writeEnd, STDERR_FILENO);
    // Not those that this process has inherited: tests count what descriptors are left.
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    signal(SIGPIPE, SIG_DFL);
    for (std::string const& name : command.unset) {
        unsetenv(name.c_str());
    }
    for (auto const& [name, value] : command.environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    setLimit(RLIMIT_CORE, 0);
    for (auto const& [resource, value] : command.limits) {
        setLimit(resource, value);
    }
    if (!command.workingDirectory.empty() && chdir(command.workingDirectory.c_str()) != 0) {
        _exit(126);
    }
    for (int const capability : command.lacking) {
        prctl(PR_CAPBSET_DROP, capability);  // fails for who has none to lose
    }
    if (command.userId != 0 && !becomeUser(command.userId)) {
        _exit(126);
    }
    std::vector<char*> words = emulatorFor(command.words[0]);
    for (std::string const& word : command.words) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    execvp(words[0], words.data());
    _exit(127);
}

// Reads once; false at the end.
bool readSome(int descriptor, std::string& text)
{
    std::array<char, 65536> piece{};
    ssize_t const count = read(descriptor, piece.data(), piece.size());
    if (count > 0) {
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
    return count > 0 || (count < 0 && errno == EINTR);
}

}  // namespace

ChildProcess::ChildProcess(Command const& command)
{
    Pipe const in;
    Pipe const out;
    Pipe const err;
    pid_ = fork();
    if (pid_ == 0) {
        become(command, in, out, err);
    }
    close(in.readEnd);
    close(out.writeEnd);
    close(err.writeEnd);
    in_ = in.writeEnd;
    out_ = out.readEnd;
    err_ = err.readEnd;
}

ChildProcess::~ChildProcess()
{
    if (!reaped_) {
        ::kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    closeOnce(in_);
    closeOnce(out_);
    closeOnce(err_);
}

std::string ChildProcess::readLine()
{
    std::string line;
    for (char c = 0; read(out_, &c, 1) == 1 && c != '\n';) {
        line += c;
    }
    return line;
}

void ChildProcess::closeInput()
{
    closeOnce(in_);
}

void ChildProcess::kill(int signal) const
{
    ::kill(pid_, signal);
}

Finished ChildProcess::finish()
{
    closeInput();
    Finished finished;
    bool outOpen = true;
    bool errOpen = true;
    while (outOpen || errOpen) {
        std::array<pollfd, 2> waited{pollfd{outOpen ? out_ : -1, POLLIN, 0},
                                     pollfd{errOpen ? err_ : -1, POLLIN, 0}};
        poll(waited.data(), waited.size(), -1);
        outOpen = outOpen && (waited[0].revents == 0 || readSome(out_, finished.out));
        errOpen = errOpen && (waited[1].revents == 0 || readSome(err_, finished.err));
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    reaped_ = true;
    finished.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    finished.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return finished;
}

Finished run(Command const& command)
{
    ChildProcess process(command);
    return process.finish();
}

}  // namespace QuaskTesting
