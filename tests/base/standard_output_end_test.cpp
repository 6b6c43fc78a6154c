// What is on the output when the process is ended from outside or by an exception.

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

#include "base/standard_output.h"
#include "support/forked.h"
#include "support/patience.h"
#include "support/pipe.h"
#include "support/waiting.h"

namespace {

using Dovan::StandardOutput;
using QuaskTesting::awaitWaiting;
using QuaskTesting::endOf;
using QuaskTesting::Forked;
using QuaskTesting::Patience;
using QuaskTesting::Pipe;
using QuaskTesting::succeedsInTime;

// Runs `body` with standard output going to the pipe.
template <typename Body>
Forked printing(Pipe const& pipe, Body body)
{
    return Forked([&pipe, body] {
        StandardOutput output(pipe.writeEnd());
        StandardOutput::writeRemainderOnTermination();
        return body();
    });
}

TEST(StandardOutputEnd, TheRemainderIsWrittenFromASignalHandler)
{
    Pipe pipe;
    Forked process = printing(pipe, [] {
        static_cast<void>(std::signal(SIGUSR1, [](int) {
            StandardOutput::writeRemainder();
            _exit(7);
        }));
        std::cout << "finished line\nunfinished";
        raise(SIGUSR1);
        return 0;
    });
    EXPECT_EQ(pipe.readToEnd(), "finished line\n");
    EXPECT_EQ(process.end(), 7);
}

// Its memory may be gone.
TEST(StandardOutputEnd, AnObjectThatHasEndedIsNotTouched)
{
    EXPECT_EQ(endOf([] {
                  Pipe const pipe;
                  std::size_t const size = 64 * 1024;
                  void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
                  std::destroy_at(new (memory) StandardOutput(pipe.writeEnd()));
                  munmap(memory, size);
                  StandardOutput::writeRemainder();
                  return 7;
              }),
              7);
}

TEST(StandardOutputEnd, ASignalLeavesTheFinishedLines)
{
    for (int const number : {SIGHUP, SIGINT, SIGTERM}) {
        Pipe pipe;
        Forked process = printing(pipe, [number] {
            std::cout << "finished line\nunfinished";
            raise(number);
            return 0;
        });
        EXPECT_EQ(pipe.readToEnd(), "finished line\n");
        EXPECT_EQ(process.end(), -number);
    }
}

[[noreturn]] void fail()
{
    throw std::runtime_error("nobody catches this");
}

TEST(StandardOutputEnd, AnExceptionThatNothingCatchesLeavesTheFinishedLines)
{
    Pipe pipe;
    Forked process = printing(pipe, []() -> int {
        close(STDERR_FILENO);
        std::cout << "finished line\nunfinished";
        []() noexcept { fail(); }();
        return 0;
    });
    EXPECT_EQ(pipe.readToEnd(), "finished line\n");
    EXPECT_EQ(process.end(), -SIGABRT);
}

// More lines than a pipe holds, also when it has been made larger.
std::string const manyLines = [] {
    std::string lines;
    for (int i = 0; i < 40000; ++i) {
        lines += "line " + std::to_string(i) + "\n";
    }
    return lines;
}();

TEST(StandardOutputEnd, WhatIsBeingWrittenWhenASignalComesIsNotWrittenTwice)
{
    Pipe pipe;
    // The pipe has a page less than the buffer, so that there is room for a part of a write only. A
    // whole page: the kernel adds the end of a write to one that has room for it.
    std::string const page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE)), '\n');
    ASSERT_EQ(write(pipe.writeEnd(), page.data(), page.size()), std::ssize(page));
    Forked process = printing(pipe, [] {
        static_cast<void>(std::signal(SIGUSR1, [](int) {
            StandardOutput::writeRemainder();
            _exit(7);
        }));
        // In pieces that are collected; a text of this size would be written from where it is.
        for (std::string_view rest = manyLines; !rest.empty(); rest.remove_prefix(1)) {
            std::cout << rest.front();
        }
        return 0;
    });
    while (!pipe.isFull()) {
    }
    awaitWaiting(process.pid());  // in the write, not between two of them
    process.kill(SIGUSR1);
    EXPECT_TRUE((page + manyLines).starts_with(pipe.readToEnd()));
    EXPECT_EQ(process.end(), 7);
}

TEST(StandardOutputEnd, ASignalDuringAWriteLetsItsLinesBeWritten)
{
    EXPECT_TRUE(succeedsInTime([](Patience& patience) {
        Pipe pipe;
        Forked process = printing(pipe, [] {
            std::cout << manyLines << std::flush << "not printed any more\n" << std::flush;
            return 0;
        });
        while (!pipe.isFull()) {
        }
        patience.begin();
        process.kill(SIGTERM);
        std::string const text = pipe.readToEnd();
        EXPECT_EQ(process.end(), -SIGTERM);
        return text == manyLines;
    }));
}

TEST(StandardOutputEnd, ASignalWithinALineThatIsLongerThanTheBufferWaitsForItsEnd)
{
    std::string const piece(300000, 'x');
    EXPECT_TRUE(succeedsInTime([&piece](Patience& /*patience*/) {
        Pipe pipe;
        Forked process = printing(pipe, [&piece] {
            std::cout << piece;
            raise(SIGTERM);
            std::cout << "end\n";
            std::cout << "not printed any more\n" << std::flush;
            return 0;
        });
        std::string const text = pipe.readToEnd();
        EXPECT_EQ(process.end(), -SIGTERM);
        return text == piece + "end\n";
    }));
}

TEST(StandardOutputEnd, ASignalDoesNotWaitForEverForAReaderThatTakesNothing)
{
    Pipe pipe;
    pipe.makeLarge();
    std::string const before = pipe.fill();
    Forked process = printing(pipe, [] {
        std::cout << "finished line\n";
        raise(SIGTERM);
        return 0;
    });
    EXPECT_EQ(process.end(), -SIGTERM);
    EXPECT_TRUE(pipe.readToEnd() == before);
}

}  // namespace
