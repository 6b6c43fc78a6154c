#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/private_root.h"
#include "support/quask_program.h"
#include "support/table_files.h"

namespace QuaskTesting {

inline constexpr std::uint32_t manyBuckets = 60000;

class FaultsTest : public testing::Test
{
protected:
    Finished quask(std::vector<std::string> arguments) const
    {
        return run(command(std::move(arguments)));
    }

    Command command(std::vector<std::string> arguments) const
    {
        Command command = QuaskTesting::quask(root, std::move(arguments));
        command.words[0] = program;
        return command;
    }

    // The first line of a client report or a header report.
    std::string title(std::string const& table) const
    {
        return "Quask table \"" + root.path() + "/" + table + "\"\n";
    }

    // A table of one element, 7.
    void makeSmall(std::string const& name) const { small().writeTo(root, name); }

    static TableImage small()
    {
        return TableImage::of("int", 4).buckets(1).chain(0, {{0, bytesOf(7)}});
    }

    // A table whose scan takes some megabytes: slot i in bucket i, its value i + `offset`.
    static TableImage large(std::uint32_t offset = 0)
    {
        TableImage image = TableImage::of("int", 4).buckets(manyBuckets);
        for (std::uint32_t i = 0; i < manyBuckets; ++i) {
            image.chain(i, {{i, bytesOf(i + offset)}});
        }
        return image;
    }

    PrivateRoot root;
    std::string program = QUASK_UNDER_TEST;
    std::string const smallScan =
        "bucket[0] 0-->07000000 ffffffff --> none\nLookaside hits: 0\nChain restarts: 0\n";
};

inline void expectFinished(Finished const& run, std::string const& out, std::string const& err,
                           int exitStatus)
{
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.err, err);
    EXPECT_EQ(run.exitStatus, exitStatus);
    EXPECT_EQ(run.signal, 0);
}

}  // namespace QuaskTesting
