// What happens to a table's files while they are scanned. The scan waits during that time.

#include <gmock/gmock.h>

#include <cstddef>
#include <filesystem>

#include "faults/blocked_scan.h"
#include "faults/cut_table.h"

namespace {

using QuaskTesting::BlockedScan;
using QuaskTesting::Finished;

// What the tool collects before it writes, at least.
constexpr std::size_t outputBuffer = 240 * 1024;

class VanishingTable : public QuaskTesting::CutTableTest
{
protected:
    // The files go, and the scan does not mind: it has them mapped.
    template <typename Fault>
    void expectWholeScan(Fault const& fault)
    {
        std::string const whole = quask({"feed"}).out;
        BlockedScan scan(command({"feed"}));
        fault();
        Finished const finished = scan.finish();
        EXPECT_EQ(finished.err, "");
        EXPECT_EQ(finished.exitStatus, 0);
        EXPECT_TRUE(finished.out == whole);
    }
};

TEST_F(VanishingTable, ASlotFileCutShortDuringAScanEndsItAfterTheLinesBefore)
{
    expectEndWhereTheSlotFileIsCut();
}

TEST_F(VanishingTable, ABucketFileCutShortDuringAScanEndsItAfterTheLinesBefore)
{
    expectEndWhereTheBucketFileIsCut();
}

TEST_F(VanishingTable, ASlotFileEmptiedDuringAScanEndsItAfterTheLinesBefore)
{
    std::string const whole = quask({"feed"}).out;
    BlockedScan scan(command({"feed"}));
    std::filesystem::resize_file(directory + "/slots", 0);
    Finished const finished = scan.finish();
    EXPECT_EQ(finished.err,
              "Quask table file " + directory + "/slots was cut short while it was being read\n");
    EXPECT_EQ(finished.exitStatus, 1);
    EXPECT_GT(finished.out.size(), outputBuffer);
    EXPECT_EQ(finished.out.back(), '\n');
    EXPECT_TRUE(whole.starts_with(finished.out));
}

TEST_F(VanishingTable, ATableDeletedDuringAScanIsStillScanned)
{
    expectWholeScan([&] { std::filesystem::remove_all(directory); });
}

TEST_F(VanishingTable, ATableRenamedDuringAScanIsStillScanned)
{
    expectWholeScan([&] { std::filesystem::rename(directory, root.path() + "/other"); });
}

TEST_F(VanishingTable, ATableReplacedDuringAScanIsScannedAsItWasBefore)
{
    expectWholeScan([&] {
        std::filesystem::remove_all(directory);
        large(1000).writeTo(root, "feed");
    });
    EXPECT_THAT(quask({"feed"}).out, testing::StartsWith("bucket[0] 0-->e8030000 ffffffff"));
}

TEST_F(VanishingTable, ATableWhoseFilesGetNewOnesDuringAScanIsScannedAsItWasBefore)
{
    expectWholeScan([&] { large(1000).writeTo(root, "feed"); });
}

TEST_F(VanishingTable, ATableWithoutABucketFileCannotBeScanned)
{
    large().without(QuaskTesting::TableFile::buckets).writeTo(root, "feed");
    expectFinished(quask({"feed"}), "", "Error attaching to Quask feed\n", 1);
}

TEST_F(VanishingTable, ATableWithoutASlotFileCannotBeScanned)
{
    large().without(QuaskTesting::TableFile::slots).writeTo(root, "feed");
    expectFinished(quask({"feed"}), "", "Error attaching to Quask feed\n", 1);
}

TEST_F(VanishingTable, ASlotFileCutShortBeforeAScanIsRejected)
{
    std::filesystem::resize_file(directory + "/slots", 100000);
    expectFinished(quask({"feed"}),
                   "Quask feed validation failed: SlotTable::Header::validate() bad shmem "
                   "size:100000 wanted:1440200 for 60000 slots\n",
                   "Error attaching to Quask feed\n", 1);
}

}  // namespace
