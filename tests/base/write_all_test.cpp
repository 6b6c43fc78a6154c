#include "base/write_all.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <string>

#include <sys/resource.h>

#include "support/forked.h"
#include "support/pipe.h"
#include "support/waiting.h"

namespace {

using Dovan::writeAll;
using QuaskTesting::Forked;
using QuaskTesting::Pipe;

// More than a pipe holds.
std::string const longText(300000, 'x');

TEST(WriteAll, WritesAsTheReaderTakesIt)
{
    for (bool const blocking : {true, false}) {
        Pipe pipe;
        if (!blocking) {
            pipe.unblockWriteEnd();
        }
        Forked writer([&pipe] { return writeAll(pipe.writeEnd(), longText) ? 7 : 1; });
        EXPECT_TRUE(pipe.readToEnd() == longText);
        EXPECT_EQ(writer.end(), 7);
    }
}

// A write that has written something ends with that; one that has not, with an error.
TEST(WriteAll, GoesOnAfterASignalsHandler)
{
    for (bool const begun : {false, true}) {
        Pipe pipe;
        std::string const before = begun ? "" : pipe.fill();
        Forked writer([&pipe] {
            struct sigaction action
            {};
            action.sa_handler = [](int) {};
            sigaction(SIGUSR1, &action, nullptr);
            return writeAll(pipe.writeEnd(), longText) ? 7 : 1;
        });
        while (!pipe.isFull()) {
        }
        QuaskTesting::awaitWaiting(writer.pid());
        writer.kill(SIGUSR1);
        EXPECT_TRUE(pipe.readToEnd() == before + longText);
        EXPECT_EQ(writer.end(), 7);
    }
}

TEST(WriteAll, SaysWhyItFails)
{
    EXPECT_FALSE(writeAll(-1, "text"));
    EXPECT_EQ(errno, EBADF);
    EXPECT_TRUE(writeAll(-1, ""));
}

// poll() refuses to wait for a descriptor then. One that goes round without waiting is ended by the
// limit on the processor's time.
TEST(WriteAll, WaitsWithoutLoadWhenNoDescriptorsAreAllowed)
{
    Pipe pipe;
    pipe.unblockWriteEnd();
    Forked writer([&pipe] {
        rlimit const none{0, 0};
        setrlimit(RLIMIT_NOFILE, &none);
        rlimit const aSecond{1, 1};
        setrlimit(RLIMIT_CPU, &aSecond);
        return writeAll(pipe.writeEnd(), longText) ? 7 : 1;
    });
    while (!pipe.isFull()) {
    }
    QuaskTesting::awaitWaits(writer.pid(), 5);
    EXPECT_TRUE(pipe.readToEnd() == longText);
    EXPECT_EQ(writer.end(), 7);
}

}  // namespace
