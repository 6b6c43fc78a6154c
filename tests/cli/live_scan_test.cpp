// quask EXPR while another process changes the table as fast as it can.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/child_process.h"
#include "support/private_root.h"
#include "support/quask_program.h"
#include "support/scan_checker.h"
#include "support/table_layout.h"

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

    // Scans until changed chains and values being rewritten have really been met.
    void expectSoundScans(HotTable const& table) const
    {
        ChildProcess process(writer("hot", table));
        ASSERT_EQ(process.readLine(), "ready");
        ScanChecker checker(table);
        ScanCounts const& met = checker.counts();
        while ((met.scans < 50 || met.restarts == 0 || met.lookasideValues == 0) && !HasFailure()) {
            Finished const scan = QuaskTesting::run(QuaskTesting::quask(root, {"hot"}));
            EXPECT_EQ(scan.err, "");
            EXPECT_EQ(scan.exitStatus, 0);
            checker.check(scan.out);
            EXPECT_EQ(checker.violations(), std::vector<std::string>());
        }
        EXPECT_GE(met.lookasideHits, met.lookasideValues);
        EXPECT_EQ(process.finish().exitStatus, 0);
    }

    // Scans the table until it has grown to its end, or `remaps` scans of this test have met
    // growth.
    void expectSoundScansOfGrowth(std::string const& name, HotTable const& table,
                                  unsigned& remaps) const
    {
        std::string const slots = root.path() + "/" + name + "/slots";
        ChildProcess process(writer(name, table));
        ASSERT_EQ(process.readLine(), "ready");
        ScanChecker checker(table);
        bool isFull = false;
        while (remaps < 5 && !isFull && !HasFailure()) {
            isFull = std::filesystem::file_size(slots) ==
                     QuaskTesting::slotsFileSize(QuaskTesting::slotSizeFor(table.valueSize),
                                                 table.maxSlots);
            QuaskTesting::Command command = QuaskTesting::quask(root, {name});
            command.environment["DOVAN_DEBUG"] = "Quask-" + name + "=5";
            Finished const scan = QuaskTesting::run(command);
            EXPECT_EQ(scan.exitStatus, 0);
            checker.check(scan.out);
            EXPECT_EQ(checker.violations(), std::vector<std::string>());
            bool const remapped =
                scan.err.find("QuaskMem::resize() resizing from ") != scan.err.npos;
            remaps += remapped ? 1 : 0;
        }
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

TEST_F(LiveScan, FollowsATableThatGrowsDuringTheScan)
{
    HotTable const table{
        .valueSize = 8, .buckets = 512, .stable = 500, .hot = 50, .slots = 64, .maxSlots = 200000};
    unsigned remaps = 0;
    for (unsigned i = 0; remaps < 5 && !HasFailure(); ++i) {
        expectSoundScansOfGrowth("growing" + std::to_string(i), table, remaps);
    }
}

}  // namespace
