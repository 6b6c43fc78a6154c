#include "base/standard_output.h"

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Dovan::StandardOutput;

struct Pipe
{
    Pipe() { EXPECT_EQ(pipe(ends), 0); }
    ~Pipe()
    {
        close(ends[0]);
        close(ends[1]);
    }

    // What has been written so far; reads once.
    std::string read() const
    {
        std::string text(1 << 20, '\0');
        ssize_t const count = ::read(ends[0], text.data(), text.size());
        text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return text;
    }

    int ends[2];
};

TEST(StandardOutput, CollectsTextAndWritesItAtTheEnd)
{
    Pipe const pipe;
    fcntl(pipe.ends[0], F_SETFL, O_NONBLOCK);
    {
        StandardOutput output(pipe.ends[1]);
        std::cout << "bucket[" << 1 << "]\n";
        EXPECT_EQ(pipe.read(), "");
    }
    EXPECT_EQ(pipe.read(), "bucket[1]\n");
}

TEST(StandardOutput, AFlushWritesAtOnce)
{
    Pipe const pipe;
    StandardOutput output(pipe.ends[1]);
    std::cout << "Lookaside hits: 0" << std::endl;
    EXPECT_EQ(pipe.read(), "Lookaside hits: 0\n");
    EXPECT_TRUE(output.finish());
}

TEST(StandardOutput, WritesPiecesOfEverySizeInOrder)
{
    Pipe const pipe;
    std::string expected;
    for (std::size_t const size : {1u, 100000u, 200000u, 262144u, 262145u, 1000000u, 3u}) {
        expected += std::string(size, static_cast<char>('a' + size % 26));
    }
    std::string received;
    std::thread reader([&] {
        while (received.size() < expected.size()) {
            received += pipe.read();
        }
    });
    {
        StandardOutput output(pipe.ends[1]);
        std::size_t start = 0;
        for (std::size_t const size : {1u, 100000u, 200000u, 262144u, 262145u, 1000000u, 3u}) {
            std::cout << std::string_view(expected).substr(start, size);
            start += size;
        }
    }
    reader.join();
    EXPECT_EQ(received, expected);
}

// Builds `text` in lent room.
std::string_view buildIn(StandardOutput& output, std::string_view text)
{
    std::size_t size = 0;
    char* const room = output.lendRoom(size);
    EXPECT_GE(size, text.size());
    return {room, text.copy(room, text.size())};
}

TEST(StandardOutput, TextBuiltInLentRoomFollowsWhatWasPrintedBefore)
{
    Pipe const pipe;
    StandardOutput output(pipe.ends[1]);
    std::cout << "first ";
    output.append(buildIn(output, "second "));
    output.append(buildIn(output, "third "));
    std::cout << "fourth" << std::flush;
    EXPECT_EQ(pipe.read(), "first second third fourth");
}

TEST(StandardOutput, TextBuiltInLentRoomIsPrintedOnceWhenAFlushComesBetween)
{
    Pipe const pipe;
    StandardOutput output(pipe.ends[1]);
    std::cout << "1\n";
    std::string_view const line = buildIn(output, "a line longer than what was flushed\n");
    std::cout << std::flush;
    output.append(line);
    output.append(buildIn(output, "2\n"));
    std::cout << std::flush;
    EXPECT_EQ(pipe.read(), "1\na line longer than what was flushed\n2\n");
}

TEST(StandardOutput, LentRoomNotUsedLeavesNoTrace)
{
    Pipe const pipe;
    StandardOutput output(pipe.ends[1]);
    buildIn(output, "thrown away");
    std::cout << "kept" << std::flush;
    EXPECT_EQ(pipe.read(), "kept");
}

TEST(StandardOutput, KnowsTheStreamsThatItIsTheBufferOf)
{
    Pipe const pipe;
    std::ostringstream other;
    EXPECT_EQ(StandardOutput::of(std::cout), nullptr);
    StandardOutput output(pipe.ends[1]);
    EXPECT_EQ(StandardOutput::of(std::cout), &output);
    EXPECT_EQ(StandardOutput::of(other), nullptr);
}

TEST(StandardOutput, AFullDeviceIsReportedAtTheEnd)
{
    int const full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    StandardOutput output(full);
    std::cout << "text";
    EXPECT_FALSE(output.finish());
    close(full);
}

TEST(StandardOutput, AFailedFlushIsReportedAtTheEndAlthoughNothingIsLeft)
{
    int const full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    StandardOutput output(full);
    std::cout << "text" << std::endl;
    EXPECT_FALSE(std::cout.good());
    EXPECT_FALSE(output.finish());
    std::cout.clear();
    close(full);
}

TEST(StandardOutput, WaitsForADescriptorThatDoesNotBlock)
{
    Pipe const pipe;
    fcntl(pipe.ends[1], F_SETFL, O_NONBLOCK);
    std::string const text(3 << 20, 'x');
    std::size_t received = 0;
    std::thread reader([&] {
        while (received < text.size()) {
            received += pipe.read().size();
        }
    });
    {
        StandardOutput output(pipe.ends[1]);
        std::cout << text;
        EXPECT_TRUE(output.finish());
    }
    reader.join();
    EXPECT_EQ(received, text.size());
}

TEST(StandardOutput, TheRemainderIsWrittenFromASignalHandler)
{
    Pipe const pipe;
    pid_t const child = fork();
    if (child == 0) {
        std::signal(SIGUSR1, [](int) {
            StandardOutput::writeRemainder();
            _exit(7);
        });
        StandardOutput output(pipe.ends[1]);
        std::cout << "finished line\n";
        raise(SIGUSR1);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(pipe.read(), "finished line\n");
}

// Prints a line and ends by a signal; how that ended.
int statusAfter(int number, Pipe const& pipe, void (*prepare)())
{
    pid_t const child = fork();
    if (child == 0) {
        prepare();
        StandardOutput output(pipe.ends[1]);
        StandardOutput::writeRemainderOnTermination();
        std::cout << "finished line\n";
        raise(number);
        _exit(0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

TEST(StandardOutput, TheRemainderIsWrittenWhenTheProcessIsTerminated)
{
    for (int const number : {SIGHUP, SIGINT, SIGTERM}) {
        Pipe const pipe;
        int const status = statusAfter(number, pipe, [] {});
        EXPECT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), number);
        EXPECT_EQ(pipe.read(), "finished line\n");
    }
}

TEST(StandardOutput, AnIgnoredSignalStaysIgnored)
{
    Pipe const pipe;
    int const status = statusAfter(SIGHUP, pipe, [] { std::signal(SIGHUP, SIG_IGN); });
    EXPECT_TRUE(WIFEXITED(status));
}

}  // namespace
