// What happens to a table's files while they are scanned. The scan waits during that time.

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>

#include "faults/blocked_scan.h"
#include "faults/faults_fixture.h"
#include "support/table_layout.h"

namespace {

namespace BucketsOffset = QuaskTesting::BucketsOffset;
namespace RecordOffset = QuaskTesting::RecordOffset;
namespace SlotsOffset = QuaskTesting::SlotsOffset;
using QuaskTesting::BlockedScan;
using QuaskTesting::Finished;

// What the tool collects before it writes, at least.
constexpr std::size_t outputBuffer = 240 * 1024;

class VanishingTable : public QuaskTesting::FaultsTest
{
protected:
    VanishingTable() { large().writeTo(root, "feed"); }

    // The file is cut to half of its length, in pages, under the scan. The bytes that bucket i
    // needs of it end at `end` + i * `step`.
    void expectEndAtTheCut(std::string const& name, std::uint64_t end, std::uint64_t step)
    {
        std::string const whole = quask({"feed"}).out;
        std::string const path = directory + "/" + name;
        std::uint64_t const length = std::filesystem::file_size(path) / 2 / 4096 * 4096;
        BlockedScan scan(command({"feed"}));
        std::filesystem::resize_file(path, length);
        Finished const finished = scan.finish();
        EXPECT_EQ(finished.err,
                  "Quask table file " + path + " was cut short while it was being read\n");
        EXPECT_EQ(finished.exitStatus, 1);
        // The lines of all buckets before the first of which a byte is missing.
        EXPECT_EQ(std::count(finished.out.begin(), finished.out.end(), '\n'),
                  static_cast<std::ptrdiff_t>((length - end) / step + 1));
        EXPECT_EQ(finished.out.back(), '\n');
        EXPECT_TRUE(whole.starts_with(finished.out));
    }

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

    std::string const directory = root.path() + "/feed";
};

TEST_F(VanishingTable, ASlotFileCutShortDuringAScanEndsItAfterTheLinesBefore)
{
    expectEndAtTheCut("slots", SlotsOffset::slot(24, 0) + RecordOffset::value + 4, 24);
}

TEST_F(VanishingTable, ABucketFileCutShortDuringAScanEndsItAfterTheLinesBefore)
{
    expectEndAtTheCut("buckets", BucketsOffset::link(1), 8);
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
