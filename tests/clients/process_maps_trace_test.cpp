// What is logged while the maps files are read.

#include "clients/process_maps_fixture.h"

namespace {

using QuaskTesting::executable;
using QuaskTesting::InfoByTable;
using QuaskTesting::Lines;
using QuaskTesting::mapsLine;
using QuaskTesting::ProcessMapsTest;
using QuaskTesting::table;

using ProcessMapsTraceTest = ProcessMapsTest;

TEST_F(ProcessMapsTraceTest, EveryStepOfOneTablesExtractionIsTraced)
{
    Lines infos;
    std::string const path =
        writeMaps(executable + mapsLine("rw-p", "[heap]") + mapsLine("rw-p", "") +
                  mapsLine("r--s", table + "/buckets") + mapsLine("rw-s", table + "/slots"));
    traced.extractMmapInfo(table, path, infos);
    EXPECT_EQ(traced.takeLog(),
              (Lines{"5 Extracting mmap info for rootpath: " + table + ", filePath: " + path,
                     "9 procName: feeder", "9 mmapRegion: [heap]",
                     "9 mmapRegion: " + table + "/buckets", "9 mmapRegion: " + table + "/slots",
                     "9 quaskFileType: slots", "5 Added: " + info("feeder rw-s slots")}));
}

TEST_F(ProcessMapsTraceTest, EveryStepOfAllTablesExtractionIsTraced)
{
    InfoByTable infos;
    std::string const path =
        writeMaps(executable + mapsLine("r--s", "/a/slots") + mapsLine("r--s", "/a/orvik"));
    traced.extractMmapInfoByTable("/dev/shm/quask", path, infos);
    EXPECT_EQ(
        traced.takeLog(),
        (Lines{"5 Extracting mmap info by table for rootpath: /dev/shm/quask, filePath: " + path,
               "9 procName: feeder", "9 mmapRegion: /a/slots", "9 quaskFileType: slots",
               "5 Added new entry: tableName: /a, info: " + info("feeder r--s slots") +
                   ", infoList.size: 1",
               "9 mmapRegion: /a/orvik", "9 quaskFileType: orvik",
               "9 Added to existing entry: tableName: /a, info: " + info("feeder r--s orvik") +
                   ", infoList.size: 2"}));
}

TEST_F(ProcessMapsTraceTest, AProcessWithoutANameIsTraced)
{
    Lines infos;
    std::string const path = writeMaps(mapsLine("rw-p", ""));
    traced.extractMmapInfo(table, path, infos);
    EXPECT_EQ(traced.takeLog(),
              (Lines{"5 Extracting mmap info for rootpath: " + table + ", filePath: " + path,
                     "5 Ignoring file " + path + " with empty proc name"}));
}

TEST_F(ProcessMapsTraceTest, AFileThatIsGoneIsTracedAndYieldsNothing)
{
    Lines infos;
    InfoByTable infosByTable;
    std::string const path = root.path() + "/none/maps";
    traced.extractMmapInfo(table, path, infos);
    traced.extractMmapInfoByTable(root.path(), path, infosByTable);
    EXPECT_EQ(traced.takeLog(),
              (Lines{"5 Extracting mmap info for rootpath: " + table + ", filePath: " + path,
                     "5 file " + path + " no longer exists",
                     "5 Extracting mmap info by table for rootpath: " + root.path() +
                         ", filePath: " + path,
                     "5 file " + path + " no longer exists"}));
    EXPECT_EQ(infos, Lines{});
    EXPECT_EQ(infosByTable, InfoByTable{});
    EXPECT_EQ(traced.unreadProcesses(), 0u) << "it has ended";
}

TEST_F(ProcessMapsTraceTest, AFileThatCannotBeReadIsTracedWithTheReasonAndCounted)
{
    Lines infos;
    InfoByTable infosByTable;
    std::string const path = root.makeDirectory("maps");
    traced.extractMmapInfo(table, path, infos);
    traced.extractMmapInfoByTable(root.path(), path, infosByTable);
    EXPECT_EQ(traced.takeLog(),
              (Lines{"5 Extracting mmap info for rootpath: " + table + ", filePath: " + path,
                     "5 file " + path + " cannot be read: Is a directory",
                     "5 Extracting mmap info by table for rootpath: " + root.path() +
                         ", filePath: " + path,
                     "5 file " + path + " cannot be read: Is a directory"}));
    EXPECT_EQ(infos, Lines{});
    EXPECT_EQ(infosByTable, InfoByTable{});
    EXPECT_EQ(traced.unreadProcesses(), 2u);
}

}  // namespace
