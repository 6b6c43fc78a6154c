#include "finder/table_finder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <type_traits>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "finder/surroundings.h"
#include "finder/table_finder_fixture.h"
#include "support/recording_handler.h"

namespace {

using Quask::TableFinder;
using QuaskTesting::RecordingHandler;
using Lines = std::vector<std::string>;

class TableFinderTest : public QuaskTesting::TableFinderFixture
{};

TEST_F(TableFinderTest, IsAListOfNames)
{
    static_assert(std::is_convertible_v<TableFinder*, Names*>);
    static_assert(std::is_convertible_v<TableFinder*, Dovan::Debuggable*>);
    static_assert(std::has_virtual_destructor_v<TableFinder>);
    EXPECT_TRUE(TableFinder(handler).empty());
}

TEST_F(TableFinderTest, NothingIsFoundInAnEmptyRootDirectory)
{
    EXPECT_EQ(find(""), Names{});
    root.makeDirectory("a/b/c");
    EXPECT_EQ(find(""), Names{});
}

TEST_F(TableFinderTest, EachOfTheFourTableFilesMakesATable)
{
    for (char const* const file : {"buckets", "slots", "vandral.1", "vandral.2"}) {
        root.writeFile(std::string("with ") + file + "/" + file, "");
    }
    for (char const* const file : {"orvik", "vandral", "slots.old", "Buckets"}) {
        root.writeFile(std::string("with ") + file + "/" + file, "");
    }
    EXPECT_EQ(findSorted(""),
              (Names{"with buckets", "with slots", "with vandral.1", "with vandral.2"}));
}

TEST_F(TableFinderTest, ATableIsFoundOnceHoweverManyFilesItHas)
{
    for (char const* const file :
         {"orvik", "buckets", "slots", "vandral.1", "vandral.2", "notes"}) {
        root.writeFile(std::string("feed/eq/") + file, "x");
    }
    EXPECT_EQ(find(""), Names{"feed/eq"});
}

TEST_F(TableFinderTest, OnlyARegularFileMakesATable)
{
    root.makeDirectory("directory/slots");
    std::string const pipe = root.makeDirectory("pipe") + "/slots";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(find(""), Names{});
}

TEST_F(TableFinderTest, ADirectoryNamedLikeATableFileMayBeATable)
{
    makeTables({"a/slots"});
    EXPECT_EQ(find(""), Names{"a/slots"});
}

TEST_F(TableFinderTest, ASymbolicLinkIsNotFollowed)
{
    std::string const file = root.writeFile("elsewhere/real", "x");
    makeTables({"table"});
    std::string const linked = root.makeDirectory("linked");
    ASSERT_EQ(symlink(file.c_str(), (linked + "/slots").c_str()), 0);
    ASSERT_EQ(symlink("../table", (linked + "/table").c_str()), 0);
    ASSERT_EQ(symlink(root.path().c_str(), (linked + "/root").c_str()), 0);
    EXPECT_EQ(find(""), Names{"table"});
}

TEST_F(TableFinderTest, FilesDirectlyInTheRootDirectoryAreNotATable)
{
    makeTables({"a", "b"});
    root.writeFile("slots", "x");
    root.writeFile("buckets", "x");
    EXPECT_EQ(findSorted(""), (Names{"a", "b"}));
    EXPECT_EQ(findSorted("/"), (Names{"a", "b"}));
    EXPECT_EQ(findSorted("*"), (Names{"a", "b"}));
}

TEST_F(TableFinderTest, TablesComeDepthFirstInTheOrderOfTheFileSystem)
{
    makeTables({"a/1", "a/2", "a/3", "b", "c/1", "c/2/x", "c/2/y", "d"});
    Names expected;
    for (std::string const& outer : QuaskTesting::namesInOrder(root.path())) {
        if (outer == "b" || outer == "d") {
            expected.push_back(outer);
            continue;
        }
        for (std::string const& middle : QuaskTesting::namesInOrder(root.path() + "/" + outer)) {
            std::string const path = outer + "/" + middle;
            if (path != "c/2") {
                expected.push_back(path);
                continue;
            }
            for (std::string const& inner : QuaskTesting::namesInOrder(root.path() + "/c/2")) {
                expected.push_back("c/2/" + inner);
            }
        }
    }
    EXPECT_EQ(expected.size(), 8u);
    EXPECT_EQ(find(""), expected);
}

TEST_F(TableFinderTest, ATableInsideATableIsFoundOnlyWhenItComesFirst)
{
    // Whatever order the file system gives entries in, one of these is likely to be the other way
    // round than the other.
    root.writeFile("first/slots", "x");
    root.writeFile("first/inner/slots", "x");
    root.writeFile("last/inner/slots", "x");
    root.writeFile("last/slots", "x");
    for (std::string const outer : {"first", "last"}) {
        bool const innerComesFirst =
            QuaskTesting::namesInOrder(root.path() + "/" + outer).front() == "inner";
        EXPECT_EQ(find("/" + outer),
                  innerComesFirst ? (Names{outer + "/inner", outer}) : Names{outer});
    }
}

TEST_F(TableFinderTest, ATableThatDoesNotMatchIsSearchedForTablesThatDo)
{
    makeTables({"outer", "outer/inner", "outer/inner/most"});
    EXPECT_EQ(find("most"), Names{"outer/inner/most"});
}

TEST_F(TableFinderTest, EachSearchAppendsToTheList)
{
    makeTables({"a", "b"});
    TableFinder finder(handler);
    ASSERT_TRUE(finder.find("b"));
    ASSERT_TRUE(finder.find("none"));
    ASSERT_TRUE(finder.find("a"));
    ASSERT_TRUE(finder.find("b"));
    EXPECT_EQ(finder, (Names{"b", "a", "b"}));
}

TEST_F(TableFinderTest, TheRootDirectoryMayBeASymbolicLink)
{
    makeTables({"real/feed/eq"});
    ASSERT_EQ(symlink("real", (root.path() + "/link").c_str()), 0);
    root.setRootDirectory("link");
    EXPECT_EQ(find(""), Names{"feed/eq"});
    EXPECT_EQ(find("/feed"), Names{"feed/eq"});
    EXPECT_EQ(find("real"), Names{});
}

TEST_F(TableFinderTest, TheRootDirectoryMayEndInASlash)
{
    makeTables({"feed/eq"});
    root.setRootDirectory("");
    EXPECT_EQ(find(""), Names{"feed/eq"});
    EXPECT_EQ(find("/feed"), Names{"feed/eq"});
}

TEST_F(TableFinderTest, ATableManyLevelsDownIsFound)
{
    std::string name = "0";
    for (int level = 1; level < 300; ++level) {
        name += "/" + std::to_string(level % 10);
    }
    makeTables({name, "beside"});
    EXPECT_EQ(findSorted(""), (Names{name, "beside"}));
    EXPECT_EQ(find("/" + name), Names{name});
}

TEST_F(TableFinderTest, TheSearchIsTracedStepByStep)
{
    makeTables({"a"});
    RecordingHandler traced(9);
    ASSERT_TRUE(TableFinder(traced).find("a"));
    Lines& lines = traced.lines;
    // How often each is read depends on where "." and ".." stand in the order of the file system.
    std::string const readRoot = "9 DirNode::readEntry() path: " + root.path();
    lines.erase(std::remove(lines.begin(), lines.end(), readRoot), lines.end());
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
    EXPECT_EQ(lines, (Lines{"3 TableFinder::find() expression: a",
                            "9 DirNode::DirNode() path: " + root.path(),
                            "9 DirNode::DirNode() path: " + root.path() + "/a", readRoot + "/a",
                            "5 TableFinder::find() found table 'a'",
                            "9 DirNode::~DirNode() path: " + root.path() + "/a",
                            "9 DirNode::~DirNode() path: " + root.path()}));
}

TEST_F(TableFinderTest, TheExpressionAndEachTableAreLogged)
{
    makeTables({"it's"});
    RecordingHandler routine(5);
    TableFinder finder(routine);
    ASSERT_TRUE(finder.find("/it?s"));
    ASSERT_TRUE(finder.find("none"));
    EXPECT_EQ(routine.lines, (Lines{"3 TableFinder::find() expression: /it?s",
                                    "5 TableFinder::find() found table 'it's'",
                                    "3 TableFinder::find() expression: none"}));
}

TEST_F(TableFinderTest, TheExpressionIsOfLevelThree)
{
    makeTables({"a"});
    RecordingHandler three(3);
    ASSERT_TRUE(TableFinder(three).find(""));
    EXPECT_EQ(three.lines, Lines{"3 TableFinder::find() expression: "});
    RecordingHandler two(2);
    ASSERT_TRUE(TableFinder(two).find(""));
    EXPECT_EQ(two.lines, Lines{});
}

TEST_F(TableFinderTest, TheChannelOfItsOwnIsNamedQuask)
{
    setenv("DOVAN_DEBUG", "QuaskScanner=9,Quask=3", 1);
    testing::internal::CaptureStderr();
    {
        TableFinder finder;
        finder.find("feed");
    }
    unsetenv("DOVAN_DEBUG");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Quask 3: TableFinder::find() expression: feed\n");
}

}  // namespace
