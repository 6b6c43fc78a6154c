// quask EXPR while another process changes the table as fast as it can.

#include <gtest/gtest.h>

#include <string>

#include "support/child_process.h"
#include "support/private_root.h"
#include "support/quask_program.h"
#include "support/scan_checker.h"

namespace {

using QuaskTesting::ChildProcess;
using QuaskTesting::Finished;
using QuaskTesting::HotTable;
using QuaskTesting::ScanChecker;
using QuaskTesting::ScanCounts;

class LiveScan : public testing::Test
{
protected:
    // The writer of the table `name`, at work.
    QuaskTesting::Command writer(std::string const& name, HotTable const& table) const
    {
        QuaskTesting::Command command;
        command.words = {LIVE_WRITER,
                         root.path() + "/" + name,
                         std::to_string(table.valueSize),
                         std::to_string(table.buckets),
                         std::to_string(table.stable),
                         std::to_string(table.hot)};
        if (table.maxSlots != 0) {
            command.words.push_back(std::to_string(table.maxSlots));
        }
        return command;
    }

    // Scans the table until the scans have met what `enough` asks for, at most `most` times.
    template <typename Enough>
    ScanChecker scanUntil(std::string const& name, HotTable const& table, unsigned most,
                          Enough const& enough) const
    {
        ScanChecker checker(table);
        for (unsigned i = 0; i < most && !enough(checker.counts()); ++i) {
            Finished const scan = QuaskTesting::run(QuaskTesting::quask(root, {name}));
            EXPECT_EQ(scan.err, "");
            EXPECT_EQ(scan.exitStatus, 0);
            checker.check(scan.out);
        }
        EXPECT_EQ(checker.violations(), std::vector<std::string>());
        return checker;
    }

    // Scans until changed chains and values being rewritten have really been met.
    void expectSoundScans(HotTable const& table) const
    {
        ChildProcess process(writer("hot", table));
        ASSERT_EQ(process.readLine(), "ready");
        ScanChecker const checker = scanUntil("hot", table, 5000, [](ScanCounts const& counts) {
            return counts.scans >= 50 && counts.restarts > 0 && counts.lookasideValues > 0;
        });
        EXPECT_GT(checker.counts().restarts, 0u);
        EXPECT_GT(checker.counts().lookasideHits, 0u);
        EXPECT_GT(checker.counts().lookasideValues, 0u);
        EXPECT_EQ(process.finish().exitStatus, 0);
    }

    QuaskTesting::PrivateRoot root;
};

TEST_F(LiveScan, OfSmallValuesShowsEachWholeAndInItsBucket)
{
    expectSoundScans({.valueSize = 8, .buckets = 64, .stable = 1000, .hot = 1000});
}

TEST_F(LiveScan, OfMiddlingValuesShowsEachWholeAndInItsBucket)
{
    expectSoundScans({.valueSize = 64, .buckets = 64, .stable = 1000, .hot = 1000});
}

TEST_F(LiveScan, OfLargeValuesShowsEachWholeAndInItsBucket)
{
    expectSoundScans({.valueSize = 1000, .buckets = 16, .stable = 100, .hot = 100});
}

TEST_F(LiveScan, OfOneBucketThatChangesAllTheTimeEnds)
{
    expectSoundScans({.valueSize = 20, .buckets = 1, .stable = 10, .hot = 20});
}

TEST_F(LiveScan, FollowsATableThatGrowsUnderIt)
{
    HotTable const table{
        .valueSize = 8, .buckets = 512, .stable = 500, .hot = 50, .slots = 64, .maxSlots = 200000};
    ChildProcess process(writer("growing", table));
    ASSERT_EQ(process.readLine(), "ready");
    ScanChecker checker(table);
    unsigned remaps = 0;
    for (unsigned i = 0; i < 1000 && remaps < 5; ++i) {
        QuaskTesting::Command command = QuaskTesting::quask(root, {"growing"});
        command.environment["DOVAN_DEBUG"] = "Quask-growing=5";
        Finished const scan = QuaskTesting::run(command);
        EXPECT_EQ(scan.exitStatus, 0);
        checker.check(scan.out);
        remaps += scan.err.find("QuaskMem::resize() resizing from ") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(checker.violations(), std::vector<std::string>());
    EXPECT_EQ(remaps, 5u);
    EXPECT_EQ(process.finish().exitStatus, 0);
}

}  // namespace
