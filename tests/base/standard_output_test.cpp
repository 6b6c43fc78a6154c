#include "base/standard_output.h"

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <list>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "support/forked.h"
#include "support/pipe.h"
#include "support/without_capabilities.h"

namespace {

using Dovan::StandardOutput;
using QuaskTesting::endOf;
using QuaskTesting::Pipe;
using QuaskTesting::WithoutCapabilities;

constexpr std::size_t bufferSize = std::size_t{256} * 1024;

TEST(StandardOutput, CollectsTextAndWritesItAtTheEnd)
{
    Pipe const pipe;
    pipe.unblockReadEnd();
    {
        StandardOutput output(pipe.writeEnd());
        std::cout << "bucket[" << 1 << "]\n";
        EXPECT_EQ(pipe.read(), "");
    }
    EXPECT_EQ(pipe.read(), "bucket[1]\n");
}

TEST(StandardOutput, AFlushWritesAtOnce)
{
    Pipe const pipe;
    StandardOutput output(pipe.writeEnd());
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
        StandardOutput output(pipe.writeEnd());
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
    StandardOutput output(pipe.writeEnd());
    std::cout << "first ";
    output.append(buildIn(output, "second "));
    output.append(buildIn(output, "third "));
    std::cout << "fourth" << std::flush;
    EXPECT_EQ(pipe.read(), "first second third fourth");
}

TEST(StandardOutput, TextBuiltInLentRoomIsPrintedOnceWhenAFlushComesBetween)
{
    Pipe const pipe;
    StandardOutput output(pipe.writeEnd());
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
    StandardOutput output(pipe.writeEnd());
    buildIn(output, "thrown away");
    std::cout << "kept" << std::flush;
    EXPECT_EQ(pipe.read(), "kept");
}

TEST(StandardOutput, APipeIsMadeToHoldWhatIsWrittenAtOnce)
{
    Pipe const pipe;
    pipe.makeSmall();
    StandardOutput const output(pipe.writeEnd());
    EXPECT_EQ(fcntl(pipe.readEnd(), F_GETPIPE_SZ), static_cast<int>(bufferSize));
}

TEST(StandardOutput, ALargerPipeStaysAsItIs)
{
    Pipe const pipe;
    ASSERT_EQ(fcntl(pipe.writeEnd(), F_SETPIPE_SZ, 1 << 20), 1 << 20);
    StandardOutput const output(pipe.writeEnd());
    EXPECT_EQ(fcntl(pipe.readEnd(), F_GETPIPE_SZ), 1 << 20);
}

// Whoever has too many large pipes already gets no more of them.
TEST(StandardOutput, APipeThatMayNotBeMadeLargerServesAsItIs)
{
    WithoutCapabilities const ordinary{CAP_SYS_RESOURCE, CAP_SYS_ADMIN};
    std::list<Pipe> others;
    for (int const size : {1 << 20, static_cast<int>(bufferSize)}) {
        do {
            others.emplace_back();
        } while (others.size() < 200 && fcntl(others.back().writeEnd(), F_SETPIPE_SZ, size) != -1);
    }
    if (others.size() >= 200) {
        GTEST_SKIP() << "this system lets anyone have any number of large pipes";
    }
    Pipe const& pipe = others.back();
    StandardOutput output(pipe.writeEnd());
    EXPECT_LT(fcntl(pipe.readEnd(), F_GETPIPE_SZ), static_cast<int>(bufferSize));
    std::cout << "bucket[1]" << std::flush;
    EXPECT_EQ(pipe.read(), "bucket[1]");
}

TEST(StandardOutput, KnowsTheStreamsThatItIsTheBufferOf)
{
    Pipe const pipe;
    std::ostringstream other;
    EXPECT_EQ(StandardOutput::of(std::cout), nullptr);
    StandardOutput output(pipe.writeEnd());
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
    pipe.unblockWriteEnd();
    std::string const text(3 << 20, 'x');
    std::size_t received = 0;
    std::thread reader([&] {
        while (received < text.size()) {
            received += pipe.read().size();
        }
    });
    {
        StandardOutput output(pipe.writeEnd());
        std::cout << text;
        EXPECT_TRUE(output.finish());
    }
    reader.join();
    EXPECT_EQ(received, text.size());
}

TEST(StandardOutput, KeepsTheBeginningOfALineThatDoesNotFit)
{
    Pipe const pipe;
    pipe.unblockReadEnd();
    fcntl(pipe.writeEnd(), F_SETPIPE_SZ, 2 * bufferSize);
    StandardOutput output(pipe.writeEnd());
    std::string const line(bufferSize / 2, 'x');
    std::string const begun(bufferSize / 2 - 2, 'y');
    std::cout << line << '\n' << begun;
    EXPECT_EQ(pipe.read(), "");
    std::cout << "end\n";
    EXPECT_TRUE(pipe.read() == line + "\n");
    std::cout << std::flush;
    EXPECT_TRUE(pipe.read() == begun + "end\n");
}

TEST(StandardOutput, WritesEachPieceOfALineThatIsLongerThanTheBufferAtOnce)
{
    Pipe const pipe;
    pipe.unblockReadEnd();
    fcntl(pipe.writeEnd(), F_SETPIPE_SZ, 2 * bufferSize);
    StandardOutput output(pipe.writeEnd());
    std::string const most(bufferSize - 3, 'x');
    std::cout << "first\n" << most;
    EXPECT_EQ(pipe.read(), "first\n");
    std::cout << "more";
    EXPECT_TRUE(pipe.read() == most + "more");
    std::cout << 'y';
    EXPECT_EQ(pipe.read(), "y");
    std::cout << "end\nnext\nlast";
    EXPECT_EQ(pipe.read(), "end\nnext\n");
    std::cout << " line\n" << std::flush;
    EXPECT_EQ(pipe.read(), "last line\n");
}

TEST(StandardOutput, TextBuiltInLentRoomMayBelongToALineThatIsLongerThanTheBuffer)
{
    Pipe const pipe;
    pipe.unblockReadEnd();
    fcntl(pipe.writeEnd(), F_SETPIPE_SZ, 2 * bufferSize);
    StandardOutput output(pipe.writeEnd());
    std::string const most(bufferSize - 10, 'x');
    std::cout << most;
    output.append(buildIn(output, "more"));
    EXPECT_TRUE(pipe.read() == most + "more");
    output.append(buildIn(output, " of it\n"));
    EXPECT_EQ(pipe.read(), " of it\n");
    output.append(buildIn(output, "next\n"));
    EXPECT_EQ(pipe.read(), "");
}

TEST(StandardOutput, ALineThatAFlushHasDividedIsWrittenAsItComes)
{
    Pipe const pipe;
    pipe.unblockReadEnd();
    StandardOutput output(pipe.writeEnd());
    std::cout << "a line " << std::flush;
    EXPECT_EQ(pipe.read(), "a line ");
    std::cout << "and its end\n";
    EXPECT_EQ(pipe.read(), "and its end\n");
    std::cout << "another\n";
    EXPECT_EQ(pipe.read(), "");
}

// How a process ends that prints to a pipe without a reader; 7 when it is told.
int endWithoutReader()
{
    Pipe pipe;
    pipe.closeReadEnd();
    StandardOutput output(pipe.writeEnd());
    std::cout << "line\n";
    return output.finish() ? 1 : 7;
}

TEST(StandardOutput, AReaderThatIsGoneEndsTheProcess)
{
    EXPECT_EQ(endOf(endWithoutReader), -SIGPIPE);
}

TEST(StandardOutput, AReaderThatIsGoneIsReportedWhereTheSignalIsIgnored)
{
    EXPECT_EQ(endOf([] {
                  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
                  return endWithoutReader();
              }),
              7);
}

TEST(StandardOutput, AnotherReaderThatIsGoneEndsNothing)
{
    EXPECT_EQ(endOf([] {
                  Pipe const own;
                  Pipe other;
                  other.closeReadEnd();
                  StandardOutput const output(own.writeEnd());
                  return write(other.writeEnd(), "x", 1) == -1 ? 7 : 1;
              }),
              7);
}

TEST(StandardOutput, AFileThatMayNotGrowIsReportedAtTheEnd)
{
    EXPECT_EQ(endOf([] {
                  int const file = open("/dev/shm", O_TMPFILE | O_RDWR, 0600);
                  rlimit const limit{10, 10};
                  setrlimit(RLIMIT_FSIZE, &limit);
                  StandardOutput output(file);
                  std::cout << "a line longer than that\n";
                  return output.finish() ? 1 : 7;
              }),
              7);
}

TEST(StandardOutput, GivesSignalsTheirFormerActionsBack)
{
    EXPECT_EQ(endOf([] {
                  {
                      Pipe const pipe;
                      StandardOutput const output(pipe.writeEnd());
                  }
                  raise(SIGPIPE);
                  return 1;
              }),
              -SIGPIPE);
}

}  // namespace
