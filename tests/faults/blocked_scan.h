#pragma once

#include <array>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "support/child_process.h"

namespace QuaskTesting {

// A scan that stands still in the middle: its output goes to a pipe that nobody reads, and it has
// written as much as that takes. Its text must be longer than the tool's output buffer and the pipe
// together, which the tool makes as large: 256 KiB each.
class BlockedScan
{
public:
    explicit BlockedScan(Command command) : BlockedScan(std::move(command), 0) {}

    // With these flags set on the pipe's writing end, O_NONBLOCK for one.
    BlockedScan(Command command, int flags) : pipe_(flags), process_(with(command, pipe_.ends[1]))
    {
        pipe_.closeEnd(1);
        char byte = 0;
        // The first byte comes with the rest of the buffer right after it.
        if (read(pipe_.ends[0], &byte, 1) != 1) {
            throw std::runtime_error("a scan ended early: " + process_.finish().err);
        }
        start_ = byte;
    }

    ChildProcess const& process() const { return process_; }

    // Lets it go on and end; Finished::out is all that it wrote.
    Finished finish()
    {
        std::string out = start_;
        std::array<char, 65536> piece{};
        for (ssize_t count = 0; (count = read(pipe_.ends[0], piece.data(), piece.size())) > 0;) {
            out.append(piece.data(), static_cast<std::size_t>(count));
        }
        Finished finished = process_.finish();
        finished.out = out;
        return finished;
    }

    // Waits for it to end by itself, its output still unread.
    Finished finishUnread() { return process_.finish(); }

    // Closes the reading end instead.
    Finished abandon()
    {
        pipe_.closeEnd(0);
        return process_.finish();
    }

private:
    struct Pipe
    {
        explicit Pipe(int flags)
        {
            if (pipe2(ends.data(), O_CLOEXEC) != 0) {
                throw std::runtime_error("no pipe");
            }
            fcntl(ends[1], F_SETPIPE_SZ, 4096);
            fcntl(ends[1], F_SETFL, flags);
        }
        Pipe(Pipe const&) = delete;
        Pipe& operator=(Pipe const&) = delete;
        ~Pipe()
        {
            closeEnd(0);
            closeEnd(1);
        }

        void closeEnd(std::size_t end)
        {
            if (ends[end] >= 0) {
                close(ends[end]);
                ends[end] = -1;
            }
        }

        std::array<int, 2> ends{};
    };

    static Command with(Command command, int descriptor)
    {
        command.outDescriptor = descriptor;
        return command;
    }

    Pipe pipe_;
    ChildProcess process_;
    std::string start_;
};

}  // namespace QuaskTesting
