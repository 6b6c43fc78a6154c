// Which tables an expression designates.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "finder/table_finder_fixture.h"

namespace {

class TableFinderExpression : public QuaskTesting::TableFinderFixture
{};

TEST_F(TableFinderExpression, TheEmptyExpressionFindsEveryTable)
{
    makeTables({"a/x", "b/y", "c", "d/e/f/g"});
    EXPECT_EQ(findSorted(""), (Names{"a/x", "b/y", "c", "d/e/f/g"}));
}

TEST_F(TableFinderExpression, ANameMayStandAnywhereInThePath)
{
    makeTables({"a/x", "b/y"});
    EXPECT_EQ(find("x"), Names{"a/x"});
    EXPECT_EQ(find("b"), Names{"b/y"});
    EXPECT_EQ(find("a/x"), Names{"a/x"});
    EXPECT_EQ(find("z"), Names{});
}

TEST_F(TableFinderExpression, ANameIsOpenOnBothSides)
{
    makeTables({"x", "xyz", "ax", "axe/b", "y"});
    EXPECT_EQ(findSorted("x"), (Names{"ax", "axe/b", "x", "xyz"}));
    EXPECT_EQ(findSorted("xe/"), Names{"axe/b"});
}

TEST_F(TableFinderExpression, ALeadingSlashIsTheRootDirectory)
{
    makeTables({"a/x", "b/y", "bc", "x/b"});
    EXPECT_EQ(findSorted("/b"), (Names{"b/y", "bc"}));
    EXPECT_EQ(findSorted("/b/"), Names{"b/y"});
    EXPECT_EQ(findSorted("/b/y"), Names{"b/y"});
    EXPECT_EQ(findSorted("/y"), Names{});
    EXPECT_EQ(findSorted("/"), (Names{"a/x", "b/y", "bc", "x/b"}));
}

TEST_F(TableFinderExpression, TheRootDirectorysOwnPathIsNotPartOfTheExpression)
{
    makeTables({"a"});
    EXPECT_EQ(find(root.path()), Names{});
    EXPECT_EQ(find(root.path() + "/a"), Names{});
    EXPECT_EQ(find("quask-test"), Names{});
}

TEST_F(TableFinderExpression, LettersOfTheOtherCaseAreOthers)
{
    makeTables({"Feed", "feed"});
    EXPECT_EQ(find("Feed"), Names{"Feed"});
    EXPECT_EQ(find("FEED"), Names{});
}

TEST_F(TableFinderExpression, APatternKeepsItsMeaning)
{
    makeTables({"feed/eq", "feed/fx", "feeds", "food/eq"});
    EXPECT_EQ(findSorted("/f??d/eq"), (Names{"feed/eq", "food/eq"}));
    EXPECT_EQ(findSorted("/f[!o]*[qx]"), (Names{"feed/eq", "feed/fx"}));
    EXPECT_EQ(findSorted("e[a-f]"), (Names{"feed/eq", "feed/fx", "feeds"}));
}

TEST_F(TableFinderExpression, AStarAndAQuestionMarkStandForASlashToo)
{
    makeTables({"a/b/c", "a-b"});
    EXPECT_EQ(findSorted("/a*c"), Names{"a/b/c"});
    EXPECT_EQ(findSorted("/a?b"), (Names{"a-b", "a/b/c"}));
}

TEST_F(TableFinderExpression, ALeadingDotIsNotSpecial)
{
    makeTables({".hidden/.table", "..."});
    EXPECT_EQ(findSorted(""), (Names{"...", ".hidden/.table"}));
    EXPECT_EQ(findSorted("/?hid*/?tab"), Names{".hidden/.table"});
}

TEST_F(TableFinderExpression, ABackslashTakesTheMeaningOfAPatternAway)
{
    makeTables({"vec[3]", "vec3", "a*b", "ab"});
    EXPECT_EQ(find("vec[3]"), Names{"vec3"});
    EXPECT_EQ(find("vec\\[3\\]"), Names{"vec[3]"});
    EXPECT_EQ(find("/a\\*b"), Names{"a*b"});
}

TEST_F(TableFinderExpression, ABackslashAtTheEndTakesTheMeaningOfTheClosingStarAway)
{
    makeTables({"ab", "a*"});
    EXPECT_EQ(find("/a\\"), Names{"a*"});
}

TEST_F(TableFinderExpression, ABracketThatIsNotClosedStandsForItself)
{
    makeTables({"vec[3]", "vec3"});
    EXPECT_EQ(find("c[3"), Names{"vec[3]"});
}

TEST_F(TableFinderExpression, ANameMayHoldAnyCharacterButASlash)
{
    Names const names = {" ",          "a b",          "new\nline",          "quo'te\"",
                         "t\xc3\xa4g", "\xff\xfe\x01", std::string(255, 'n')};
    makeTables(names);
    Names sorted = names;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(findSorted(""), sorted);
    EXPECT_EQ(find("w\nl"), Names{"new\nline"});
    EXPECT_EQ(find("/\xff\xfe"), Names{"\xff\xfe\x01"});
    EXPECT_EQ(find("\xc3\xa4"), Names{"t\xc3\xa4g"});
}

TEST_F(TableFinderExpression, AnExpressionOfAnyLengthIsAnExpression)
{
    makeTables({"a"});
    EXPECT_EQ(find(std::string(100000, 'a')), Names{});
    EXPECT_EQ(find("/" + std::string(100000, '*')), Names{"a"});
}

TEST_F(TableFinderExpression, DesignatesTheSameNamesWhetherThereAreTablesOrNot)
{
    using Quask::TableFinder;
    EXPECT_TRUE(TableFinder::designates("", "a/x"));
    EXPECT_TRUE(TableFinder::designates("x", "a/xyz"));
    EXPECT_TRUE(TableFinder::designates("/a", "a/x"));
    EXPECT_FALSE(TableFinder::designates("/x", "a/x"));
    EXPECT_TRUE(TableFinder::designates("[ab]*y", "b/y"));
    EXPECT_FALSE(TableFinder::designates(root.path(), "a"));
}

}  // namespace
