#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <exception>

#include <sys/resource.h>
#include <unistd.h>

#include "base/exception.h"
#include "clients/recording_scanner.h"
#include "support/private_root.h"

namespace {

using Quask::DirNode;
using QuaskTesting::RecordingScanner;
using Lines = std::vector<std::string>;
using InfoByTable = Quask::QuaskClientScanner::TableToInfoMap;

// A line of a maps file as the kernel writes it: the path begins in column 73.
std::string mapsLine(std::string const& permissions, std::string const& path)
{
    std::string line = "7f0c5a1e2000-7f0c5a1e3000 " + permissions + " 00000000 00:1a 1234";
    line.resize(std::max(line.size(), std::size_t{73}), ' ');
    return line + path + "\n";
}

std::string const executable = mapsLine("r-xp", "/usr/bin/feeder");
std::string const table = "/dev/shm/quask/feed";

class ProcessMapsTest : public testing::Test
{
protected:
    std::string writeMaps(std::string const& contents) { return root.writeFile("maps", contents); }

    // The records of the table's clients in a maps file of these contents.
    Lines infosIn(std::string const& contents)
    {
        Lines infos;
        scanner.extractMmapInfo(table, writeMaps(contents), infos);
        return infos;
    }

    InfoByTable infosByTableIn(std::string const& contents)
    {
        InfoByTable infos;
        scanner.extractMmapInfoByTable("/dev/shm/quask", writeMaps(contents), infos);
        return infos;
    }

    std::string info(std::string const& fields) const { return pid + " " + fields + " "; }

    QuaskTesting::PrivateRoot root;
    RecordingScanner quiet{-1};
    RecordingScanner traced{9};
    RecordingScanner& scanner = quiet;

private:
    // Of DIRECTORY/PID/maps the second part is taken for the pid.
    std::string const pid = quiet.getToken(root.path(), 2, "/");
};

TEST_F(ProcessMapsTest, GetTokenCountsFromOneAndTakesARunOfDelimitersForOne)
{
    EXPECT_EQ(scanner.getToken("a  b", 2, " "), "b");
    EXPECT_EQ(scanner.getToken("a b", 3, " "), "");
    EXPECT_EQ(scanner.getToken("a b", 0, " "), "");
    EXPECT_EQ(scanner.getToken("/proc/4711/maps", 2, "/"), "4711");
}

TEST_F(ProcessMapsTest, EveryMappingOfATableFileThatTellsSomethingIsARecordInLineOrder)
{
    Lines const infos = infosIn(
        executable + mapsLine("rw-s", table + "/slots") + mapsLine("r-xp", "/usr/lib/libc.so.6") +
        mapsLine("r--s", table + "/vandral.1") + mapsLine("r--s", table + "/orvik"));
    EXPECT_EQ(infos, (Lines{info("feeder rw-s slots"), info("feeder r--s vandral.1"),
                            info("feeder r--s orvik")}));
}

TEST_F(ProcessMapsTest, AFileMappedTwiceIsTwoRecords)
{
    Lines const infos = infosIn(executable + mapsLine("r--s", table + "/slots") +
                                mapsLine("rw-s", table + "/slots"));
    EXPECT_EQ(infos, (Lines{info("feeder r--s slots"), info("feeder rw-s slots")}));
}

TEST_F(ProcessMapsTest, OtherFilesOfTheTableAreNotCounted)
{
    std::string const contents =
        executable + mapsLine("r--s", table + "/buckets") + mapsLine("r--s", table + "/vandral.2") +
        mapsLine("r--s", table + "/myslots") + mapsLine("r--s", table + "/slots2") +
        mapsLine("r--s", table + "/slots/more");
    EXPECT_EQ(infosIn(contents), Lines{});
    EXPECT_EQ(infosByTableIn(contents), InfoByTable{});
}

TEST_F(ProcessMapsTest, ASlotsFileElsewhereCountsForItsOwnDirectoryAlone)
{
    std::string const contents = executable + mapsLine("r--s", "/elsewhere/slots") +
                                 mapsLine("r--s", table + "/sub/slots") +
                                 mapsLine("r--s", "/prefix" + table + "/slots");
    EXPECT_EQ(infosIn(contents), Lines{});
    EXPECT_EQ(infosByTableIn(contents),
              (InfoByTable{{"/elsewhere", {info("feeder r--s slots")}},
                           {table + "/sub", {info("feeder r--s slots")}},
                           {"/prefix" + table, {info("feeder r--s slots")}}}));
}

TEST_F(ProcessMapsTest, AllTablesOfAProcessAreKeptApart)
{
    InfoByTable const infos =
        infosByTableIn(executable + mapsLine("rw-s", table + "/vandral.1") +
                       mapsLine("r--s", "/b/slots") + mapsLine("rw-s", table + "/slots"));
    EXPECT_EQ(infos,
              (InfoByTable{{"/b", {info("feeder r--s slots")}},
                           {table, {info("feeder rw-s vandral.1"), info("feeder rw-s slots")}}}));
}

TEST_F(ProcessMapsTest, ATableFileInTheFileSystemsRootHasTheEmptyTableName)
{
    EXPECT_EQ(infosByTableIn(executable + mapsLine("r--s", "/slots")),
              (InfoByTable{{"", {info("feeder r--s slots")}}}));
    Lines infos;
    scanner.extractMmapInfo("", writeMaps(executable + mapsLine("r--s", "/slots")), infos);
    EXPECT_EQ(infos, Lines{info("feeder r--s slots")});
}

TEST_F(ProcessMapsTest, APathWithoutASlashIsNoTablesFile)
{
    EXPECT_EQ(infosByTableIn(executable + mapsLine("r--s", "slots")), InfoByTable{});
    EXPECT_EQ(infosByTableIn(executable + mapsLine("r--s", "slots /slots")), InfoByTable{});
}

TEST_F(ProcessMapsTest, WhatTheKernelAppendsBehindThePathIsIgnored)
{
    EXPECT_EQ(infosIn(executable + mapsLine("rw-s", table + "/slots (deleted)")),
              Lines{info("feeder rw-s slots")});
    EXPECT_EQ(infosIn(executable + mapsLine("rw-s", table + "/slots and /any more/words")),
              Lines{info("feeder rw-s slots")});
    EXPECT_EQ(infosIn(executable + mapsLine("rw-s", table + "/slots ")),
              Lines{info("feeder rw-s slots")});
}

TEST_F(ProcessMapsTest, APathIsSeenUpToItsFirstBlank)
{
    std::string const contents = executable + mapsLine("r--s", "/my tables/feed/slots") +
                                 mapsLine("r--s", "/my/orvik tables/slots");
    EXPECT_EQ(infosByTableIn(contents), (InfoByTable{{"/my", {info("feeder r--s orvik")}}}));
    Lines infos;
    scanner.extractMmapInfo("/my tables/feed", writeMaps(contents), infos);
    EXPECT_EQ(infos, Lines{}) << "a table whose path has a blank has no clients";
}

TEST_F(ProcessMapsTest, OnlyBlanksSeparate)
{
    EXPECT_EQ(infosIn(executable + "  a  r--s b   c d " + table + "/slots\n"),
              Lines{info("feeder r--s slots")});
    EXPECT_EQ(infosIn(executable + "a r--s b c d\t" + table + "/slots\n"), Lines{});
    EXPECT_EQ(infosIn(executable + "a r--s b c " + table + "/slots\n"), Lines{})
        << "the path is the sixth token, wherever it stands";
    EXPECT_EQ(infosIn(executable + "a r--s b c d e " + table + "/slots\n"), Lines{});
}

TEST_F(ProcessMapsTest, LinesWithoutAPathAreSkipped)
{
    EXPECT_EQ(infosIn(executable + mapsLine("rw-p", "") + "\n\n" + mapsLine("rw-p", "[heap]") +
                      mapsLine("r--s", table + "/slots") + mapsLine("r-xp", "[vdso]")),
              Lines{info("feeder r--s slots")});
}

TEST_F(ProcessMapsTest, TheFirstLineThatIsNotEmptyOnlyNamesTheProcess)
{
    EXPECT_EQ(infosIn(mapsLine("r--s", table + "/slots")), Lines{});
    EXPECT_EQ(
        infosIn("\n\n" + mapsLine("r--s", table + "/slots") + mapsLine("rw-s", table + "/orvik")),
        Lines{info("slots rw-s orvik")});
    EXPECT_EQ(infosIn(mapsLine("r-xp", "feeder") + mapsLine("r--s", table + "/slots")),
              Lines{info("feeder r--s slots")});
    EXPECT_EQ(infosIn(mapsLine("r-xp", "/opt/my feeder/bin/feeder (deleted)") +
                      mapsLine("r--s", table + "/slots")),
              Lines{info("my r--s slots")});
}

TEST_F(ProcessMapsTest, AProcessWhoseFirstMappingHasNoPathIsIgnored)
{
    EXPECT_EQ(infosIn(mapsLine("rw-p", "") + executable + mapsLine("r--s", table + "/slots")),
              Lines{});
}

TEST_F(ProcessMapsTest, AnEmptyFileAsThatOfAKernelThreadYieldsNothing)
{
    EXPECT_EQ(infosIn(""), Lines{});
    EXPECT_EQ(infosByTableIn(""), InfoByTable{});
}

TEST_F(ProcessMapsTest, ALastLineThatIsCutShortIsNotCounted)
{
    std::string contents = executable + mapsLine("rw-s", table + "/slots");
    contents.pop_back();
    EXPECT_EQ(infosIn(contents), Lines{});
}

TEST_F(ProcessMapsTest, AFileThatCannotBeReadYieldsNothing)
{
    Lines infos;
    traced.extractMmapInfo(table, root.path(), infos);
    EXPECT_EQ(infos, Lines{});
    EXPECT_EQ(traced.takeLog(), Lines{"5 Extracting mmap info for rootpath: " + table +
                                      ", filePath: " + root.path()});
}

TEST_F(ProcessMapsTest, TheRecordsAreAppended)
{
    Lines infos{"1 other r--s slots "};
    scanner.extractMmapInfo(table, writeMaps(executable + mapsLine("r--s", table + "/slots")),
                            infos);
    EXPECT_EQ(infos, (Lines{"1 other r--s slots ", info("feeder r--s slots")}));
}

TEST_F(ProcessMapsTest, HostileLinesDoNoHarm)
{
    std::string const nul("\0", 1);
    std::string const huge(200'000, 'x');
    std::string const contents =
        executable + huge + "\n" + std::string(200'000, ' ') + "\n" + std::string(200'000, '/') +
        "\n" + nul + nul + "\n" + mapsLine("r--s", table + "/slots" + nul) +
        mapsLine("r--s", huge + "/slots") + mapsLine("\xff\xfe", table + "/orvik") +
        mapsLine("r--s", "/") + mapsLine("r--s", "/ ") + "/slots\n" + " /slots\n";
    EXPECT_EQ(infosIn(contents), Lines{info("feeder \xff\xfe orvik")});
    EXPECT_EQ(infosByTableIn(contents), (InfoByTable{{huge, {info("feeder r--s slots")}},
                                                     {table, {info("feeder \xff\xfe orvik")}}}));
}

TEST_F(ProcessMapsTest, TheQuickLookAtALineFindsWhatTakingItApartFinds)
{
    // With level 9 enabled every line is taken apart, else only those that may count. All lines of
    // up to six of these tokens, with the blanks in between:
    Lines const pieces{"a", "/slots", "x/orvik", "vandral.1", "/vandral.1/", " "};
    std::string contents = executable;
    std::size_t count = 1;
    for (int i = 0; i < 6; ++i) {
        count *= pieces.size();
    }
    for (std::size_t number = 0; number < count; ++number) {
        std::size_t rest = number;
        for (int i = 0; i < 6; ++i) {
            contents += pieces[rest % pieces.size()] + " ";
            rest /= pieces.size();
        }
        contents.back() = '\n';
    }
    std::string const path = writeMaps(contents);
    InfoByTable quick;
    InfoByTable full;
    quiet.extractMmapInfoByTable("", path, quick);
    traced.extractMmapInfoByTable("", path, full);
    EXPECT_EQ(quick, full);
    EXPECT_EQ(quick.size(), 2u) << "the directories \"\" and \"x\"";
}

TEST_F(ProcessMapsTest, EveryStepOfOneTablesExtractionIsTraced)
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

TEST_F(ProcessMapsTest, EveryStepOfAllTablesExtractionIsTraced)
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

TEST_F(ProcessMapsTest, AProcessWithoutANameIsTraced)
{
    Lines infos;
    std::string const path = writeMaps(mapsLine("rw-p", ""));
    traced.extractMmapInfo(table, path, infos);
    EXPECT_EQ(traced.takeLog(),
              (Lines{"5 Extracting mmap info for rootpath: " + table + ", filePath: " + path,
                     "5 Ignoring file " + path + " with empty proc name"}));
}

TEST_F(ProcessMapsTest, AFileThatIsGoneIsTracedAndYieldsNothing)
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
}

TEST_F(ProcessMapsTest, AddingMakesTheEntryAndThenAppends)
{
    InfoByTable infos;
    scanner.addToQuaskClientMap(infos, "t", "first");
    scanner.addToQuaskClientMap(infos, "t", "second");
    scanner.addToQuaskClientMap(infos, "a", "third");
    EXPECT_EQ(infos, (InfoByTable{{"a", {"third"}}, {"t", {"first", "second"}}}));
}

class ProcessDirectoryTest : public ProcessMapsTest
{
protected:
    // The maps paths below `directory`, sorted, relative to it.
    Lines mapsPathsBelow(std::string const& directory)
    {
        DirNode proc(traced.recorder(), directory, nullptr);
        Lines paths;
        for (std::string path; scanner.readNextMmap(proc, path);) {
            EXPECT_TRUE(path.starts_with(directory + "/"));
            paths.push_back(path.substr(directory.size() + 1));
        }
        std::ranges::sort(paths);
        return paths;
    }
};

TEST_F(ProcessDirectoryTest, EveryEntryWithAMapsFileBelowItCounts)
{
    root.writeFile("proc/4711/maps", "");
    root.writeFile("proc/self/maps", "");
    root.writeFile("proc/4712/status", "");
    root.writeFile("proc/uptime", "");
    root.writeFile("proc/maps", "");
    root.makeDirectory("proc/4713/maps");
    EXPECT_EQ(mapsPathsBelow(root.path() + "/proc"),
              (Lines{"./maps", "4711/maps", "4713/maps", "self/maps"}))
        << "4713's cannot be read, but it is there";
}

TEST_F(ProcessDirectoryTest, AnEmptyDirectoryHasNone)
{
    EXPECT_EQ(mapsPathsBelow(root.makeDirectory("proc")), Lines{});
}

TEST_F(ProcessDirectoryTest, ADirectoryThatIsNotThereHasNone)
{
    EXPECT_EQ(mapsPathsBelow(root.path() + "/proc"), Lines{});
}

TEST_F(ProcessDirectoryTest, TheKernelsHasThisProcessAndItsOwnNamesForIt)
{
    Lines const paths = mapsPathsBelow("/proc");
    EXPECT_TRUE(std::ranges::binary_search(paths, std::to_string(getpid()) + "/maps"));
    EXPECT_TRUE(std::ranges::binary_search(paths, "self/maps"));
    EXPECT_FALSE(std::ranges::binary_search(paths, "./maps"));
    EXPECT_FALSE(std::ranges::binary_search(paths, "../maps"));
}

TEST_F(ProcessDirectoryTest, ATableThatNoProcessMapsHasNoRecords)
{
    EXPECT_EQ(scanner.extractMmapInfo(root.path() + "/feed"), Lines{});
    EXPECT_FALSE(scanner.extractMmapInfoByTable(root.path()).contains(root.path() + "/feed"));
}

TEST_F(ProcessDirectoryTest, TheTraversalIsTraced)
{
    RecordingScanner routine(5);
    routine.extractMmapInfo(table);
    EXPECT_EQ(routine.takeLog().at(0),
              "5 Extracting mmap info for rootpath: " + table + " traversing /proc");
    routine.extractMmapInfoByTable("/dev/shm/quask");
    EXPECT_EQ(routine.takeLog().at(0),
              "5 Extracting mmap info by table for rootpath: /dev/shm/quask traversing /proc");
}

// Takes this process's descriptors away while it lives.
class NoDescriptors
{
public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit const none{0, before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    NoDescriptors(NoDescriptors const&) = delete;
    NoDescriptors& operator=(NoDescriptors const&) = delete;
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

private:
    rlimit before_{};
};

TEST_F(ProcessDirectoryTest, ThrowsInTheLoggedWordsWhenTheDirectoryCannotBeOpened)
{
    RecordingScanner errors(0);
    auto const expectThrow = [&](auto const& extract) {
        std::exception_ptr thrown;
        try {
            NoDescriptors const none;
            extract();
            ADD_FAILURE() << "nothing was thrown";
        } catch (...) {
            thrown = std::current_exception();
        }
        EXPECT_THAT([&] { std::rethrow_exception(thrown); },
                    testing::ThrowsMessage<Dovan::RuntimeException>("Couldn't open /proc"));
        EXPECT_EQ(errors.takeLog(), Lines{"0 Couldn't open /proc"});
    };
    expectThrow([&] { errors.extractMmapInfo(table); });
    expectThrow([&] { errors.extractMmapInfoByTable("/dev/shm/quask"); });
}

}  // namespace
