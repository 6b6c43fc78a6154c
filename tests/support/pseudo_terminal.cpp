#include "support/pseudo_terminal.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace QuaskTesting {

PseudoTerminal::PseudoTerminal(Command const& command, unsigned short width, unsigned short height)
{
    winsize const size{height, width, 0, 0};
    pid_ = forkpty(&terminal_, nullptr, nullptr, &size);
    if (pid_ < 0) {
        throw std::runtime_error("no terminal");
    }
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (std::string const& name : command.unset) {
            unsetenv(name.c_str());
        }
        for (auto const& [name, value] : command.environment) {
            setenv(name.c_str(), value.c_str(), 1);
        }
        std::vector<char*> words;
        for (std::string const& word : command.words) {
            words.push_back(const_cast<char*>(word.c_str()));
        }
        words.push_back(nullptr);
        execv(words[0], words.data());
        _exit(127);
    }
    fcntl(terminal_, F_SETFD, FD_CLOEXEC);
}

PseudoTerminal::~PseudoTerminal()
{
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close(terminal_);
}

termios PseudoTerminal::settings() const
{
    termios settings{};
    tcgetattr(terminal_, &settings);
    return settings;
}

void PseudoTerminal::type(std::string const& keys) const
{
    if (write(terminal_, keys.data(), keys.size()) < 0) {
        throw std::runtime_error("cannot type");
    }
}

void PseudoTerminal::resize(unsigned short width, unsigned short height) const
{
    winsize const size{height, width, 0, 0};
    ioctl(terminal_, TIOCSWINSZ, &size);
}

bool PseudoTerminal::readSome()
{
    std::array<char, 4096> piece{};
    ssize_t const count = read(terminal_, piece.data(), piece.size());
    if (count > 0) {
        unread_.append(piece.data(), static_cast<std::size_t>(count));
    }
    return count > 0 || (count < 0 && errno == EINTR);  // EIO: nobody has it open any more
}

std::string PseudoTerminal::readUntil(std::string const& text)
{
    std::size_t found = 0;
    while ((found = unread_.find(text)) == std::string::npos && readSome()) {
    }
    std::size_t const end = found == std::string::npos ? unread_.size() : found + text.size();
    std::string const read = unread_.substr(0, end);
    unread_.erase(0, end);
    return read;
}

std::string PseudoTerminal::readNow()
{
    pollfd waited{terminal_, POLLIN, 0};
    while (poll(&waited, 1, 0) == 1 && readSome()) {
    }
    return std::exchange(unread_, {});
}

Finished PseudoTerminal::finish()
{
    while (readSome()) {
    }
    Finished finished;
    for (char const c : unread_) {
        if (c != '\r') {
            finished.out += c;
        }
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    finished.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    finished.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return finished;
}

}  // namespace QuaskTesting
