// Where the output goes, and what happens when it cannot go there.

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "support/child_process.h"
#include "support/private_root.h"
#include "support/quask_program.h"
#include "support/table_files.h"

namespace {

using QuaskTesting::bytesOf;
using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::TableImage;

class Output : public testing::Test
{
protected:
    Output()
    {
        TableImage image = TableImage::of("int", 4).buckets(60000);
        for (std::uint32_t i = 0; i < 20000; ++i) {
            image.chain(i, {{i, bytesOf(i)}});
        }
        image.writeTo(root, "large");
    }

    Command scan() const { return QuaskTesting::quask(root, {"large"}); }

    QuaskTesting::PrivateRoot root;
};

TEST_F(Output, AFullDeviceIsAnError)
{
    for (std::vector<std::string> const& arguments :
         std::vector<std::vector<std::string>>{{"large"}, {"-x", "large"}, {"--help"}}) {
        Command command = QuaskTesting::quask(root, arguments);
        command.outDescriptor = open("/dev/full", O_WRONLY | O_CLOEXEC);
        ASSERT_GE(command.outDescriptor, 0);
        Finished const run = QuaskTesting::run(command);
        close(command.outDescriptor);
        EXPECT_EQ(run.err, "Error writing to standard output\n");
        EXPECT_EQ(run.exitStatus, 1);
    }
}

TEST_F(Output, AClosedStandardOutputIsAnError)
{
    Command command = scan();
    command.closeOut = true;
    Finished const run = QuaskTesting::run(command);
    EXPECT_EQ(run.err, "Error writing to standard output\n");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(Output, AReaderThatClosesItsEndOfThePipeEndsTheRunQuietly)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    Command command = scan();
    command.outDescriptor = ends[1];
    close(ends[0]);
    Finished const run = QuaskTesting::run(command);
    close(ends[1]);
    EXPECT_EQ(run.signal, SIGPIPE);
    EXPECT_EQ(run.err, "");
}

TEST_F(Output, WhatIsPrintedIsTheSameThroughAPipeAndIntoAFile)
{
    std::string const path = root.path() + "/out.txt";
    Command command = scan();
    command.outDescriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(command.outDescriptor, 0);
    EXPECT_EQ(QuaskTesting::run(command).exitStatus, 0);
    close(command.outDescriptor);
    Finished const piped = QuaskTesting::run(scan());
    EXPECT_EQ(std::filesystem::file_size(path), piped.out.size());
    EXPECT_EQ(piped.out.substr(piped.out.size() - 83),
              "bucket[4e1f] 4e1f-->1f4e0000 ffffffff --> none\n"
              "Lookaside hits: 0\nChain restarts: 0\n");
}

}  // namespace
