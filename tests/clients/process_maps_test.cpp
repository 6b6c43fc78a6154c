// What is made of the lines of a maps file.

#include "clients/process_maps_fixture.h"

namespace {

using QuaskTesting::executable;
using QuaskTesting::InfoByTable;
using QuaskTesting::Lines;
using QuaskTesting::mapsLine;
using QuaskTesting::ProcessMapsTest;
using QuaskTesting::RecordingScanner;
using QuaskTesting::table;

TEST_F(ProcessMapsTest, GetTokenCountsFromOneAndTakesARunOfDelimitersForOne)
{
    EXPECT_EQ(scanner.getToken("a  b", 2, " "), "b");
    EXPECT_EQ(scanner.getToken("a b", 3, " "), "");
    EXPECT_EQ(scanner.getToken("a b", 0, " "), "");
    EXPECT_EQ(scanner.getToken("/proc/4711/maps", 2, "/"), "4711");
}

TEST_F(ProcessMapsTest, EveryMappingOfATableFileThatSaysSomethingIsARecordInLineOrder)
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

TEST_F(ProcessMapsTest, APathWithoutASlashIsNotATablesFile)
{
    EXPECT_EQ(infosByTableIn(executable + mapsLine("r--s", "slots")), InfoByTable{});
    EXPECT_EQ(infosByTableIn(executable + mapsLine("r--s", "slots /slots")), InfoByTable{});
}

TEST_F(ProcessMapsTest, WhatTheKernelAppendsAfterThePathIsIgnored)
{
    EXPECT_EQ(infosIn(executable + mapsLine("rw-s", table + "/slots (deleted)")),
              Lines{info("feeder rw-s slots")});
    EXPECT_EQ(infosIn(executable + mapsLine("rw-s", table + "/slots and /any more/words")),
              Lines{info("feeder rw-s slots")});
    EXPECT_EQ(infosIn(executable + mapsLine("rw-s", table + "/slots ")),
              Lines{info("feeder rw-s slots")});
}

TEST_F(ProcessMapsTest, APathIsSeenUpToItsFirstSpace)
{
    std::string const contents = executable + mapsLine("r--s", "/my tables/feed/slots") +
                                 mapsLine("r--s", "/my/orvik tables/slots");
    EXPECT_EQ(infosByTableIn(contents), (InfoByTable{{"/my", {info("feeder r--s orvik")}}}));
    Lines infos;
    scanner.extractMmapInfo("/my tables/feed", writeMaps(contents), infos);
    EXPECT_EQ(infos, Lines{}) << "a table whose path has a space has no clients";
}

TEST_F(ProcessMapsTest, OnlySpacesSeparate)
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
    scanner.extractMmapInfo(table, root.path(), infos);
    EXPECT_EQ(infos, Lines{});
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
    // up to seven of these tokens, with the spaces in between: the path and one after it.
    Lines const pieces{"/slots", "x/orvik", "vandral.1", "/vandral.1/", " "};
    constexpr int tokens = 7;
    std::string contents = executable;
    std::size_t count = 1;
    for (int i = 0; i < tokens; ++i) {
        count *= pieces.size();
    }
    for (std::size_t number = 0; number < count; ++number) {
        std::size_t rest = number;
        for (int i = 0; i < tokens; ++i) {
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

TEST_F(ProcessMapsTest, AddingMakesTheEntryAndThenAppends)
{
    InfoByTable infos;
    scanner.addToQuaskClientMap(infos, "t", "first");
    scanner.addToQuaskClientMap(infos, "t", "second");
    scanner.addToQuaskClientMap(infos, "a", "third");
    EXPECT_EQ(infos, (InfoByTable{{"a", {"third"}}, {"t", {"first", "second"}}}));
}

}  // namespace
