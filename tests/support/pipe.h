#pragma once

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace QuaskTesting {

// A pipe of the test's own; its ends are closed when the programs that it starts are executed.
class Pipe
{
public:
    Pipe()
    {
        if (pipe2(ends_.data(), O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
    }
    Pipe(Pipe const&) = delete;
    Pipe& operator=(Pipe const&) = delete;
    ~Pipe()
    {
        closeReadEnd();
        closeWriteEnd();
    }

    int readEnd() const { return ends_[0]; }
    int writeEnd() const { return ends_[1]; }

    void closeReadEnd() { closeOnce(ends_[0]); }
    void closeWriteEnd() { closeOnce(ends_[1]); }

    // Makes the pipe hold one page, the least there is.
    void makeSmall() const { fcntl(writeEnd(), F_SETPIPE_SZ, 4096); }

    // Makes the pipe hold as much as the tool would have it hold, which then leaves it as it is.
    void makeLarge() const { fcntl(writeEnd(), F_SETPIPE_SZ, 256 * 1024); }

    // Reading an empty pipe, or writing to a full one, fails from now on instead of waiting.
    void unblockReadEnd() const { fcntl(readEnd(), F_SETFL, O_NONBLOCK); }
    void unblockWriteEnd() const { fcntl(writeEnd(), F_SETFL, O_NONBLOCK); }

    bool isFull() const
    {
        pollfd asked{writeEnd(), POLLOUT, 0};
        return poll(&asked, 1, 0) == 0;
    }

    // Leaves no room for a byte. The text that fills it.
    std::string fill() const
    {
        std::string text;
        int const flags = fcntl(writeEnd(), F_GETFL);
        unblockWriteEnd();
        while (write(writeEnd(), ".", 1) == 1) {
            text += '.';
        }
        fcntl(writeEnd(), F_SETFL, flags);
        return text;
    }

    // What it holds, at most a megabyte. Waits for the first byte; empty at the end.
    std::string read() const
    {
        std::string text(1 << 20, '\0');
        ssize_t const count = ::read(readEnd(), text.data(), text.size());
        text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return text;
    }

    // All that comes until its last writer is gone. This process's writing end is closed first.
    std::string readToEnd()
    {
        closeWriteEnd();
        std::string all;
        for (std::string piece; !(piece = read()).empty();) {
            all += piece;
        }
        return all;
    }

private:
    static void closeOnce(int& descriptor)
    {
        if (descriptor >= 0) {
            close(descriptor);
            descriptor = -1;
        }
    }

    std::array<int, 2> ends_{};
};

}  // namespace QuaskTesting
