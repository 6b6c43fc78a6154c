#include "base/standard_error.h"

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <streambuf>
#include <string>

#include <unistd.h>

#include "support/forked.h"
#include "support/pipe.h"

namespace {

using Dovan::StandardError;
using QuaskTesting::endOf;
using QuaskTesting::Forked;
using QuaskTesting::Pipe;

TEST(StandardError, WritesEachPieceAtOnce)
{
    Pipe pipe;
    Forked writer([&pipe]() -> int {
        dup2(pipe.writeEnd(), STDERR_FILENO);
        StandardError const errors;
        std::cerr << "No table" << ' ' << 1 << '\n';
        _exit(7);
    });
    EXPECT_EQ(pipe.readToEnd(), "No table 1\n");
    EXPECT_EQ(writer.end(), 7);
}

TEST(StandardError, WaitsForADescriptorThatDoesNotBlock)
{
    Pipe pipe;
    pipe.unblockWriteEnd();
    std::string const line(99, 'x');
    Forked writer([&] {
        dup2(pipe.writeEnd(), STDERR_FILENO);
        StandardError const errors;
        for (int i = 0; i < 3000; ++i) {
            std::cerr << line << std::endl;
        }
        return 7;
    });
    while (!pipe.isFull()) {
    }
    EXPECT_EQ(pipe.readToEnd().size(), 300000u);
    EXPECT_EQ(writer.end(), 7);
}

TEST(StandardError, AMessageThatCannotBeWrittenIsDropped)
{
    EXPECT_EQ(endOf([] {
                  close(STDERR_FILENO);
                  StandardError const errors;
                  std::cerr << "No table was found." << std::endl;
                  return std::cerr.good() ? 1 : 7;
              }),
              7);
}

TEST(StandardError, GivesTheFormerBufferBack)
{
    std::streambuf* const former = std::cerr.rdbuf();
    {
        StandardError const errors;
        EXPECT_NE(std::cerr.rdbuf(), former);
    }
    EXPECT_EQ(std::cerr.rdbuf(), former);
}

}  // namespace
