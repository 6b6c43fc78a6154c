// The command line of quask-stat.

#include <algorithm>

#include "stat/stat_fixture.h"

namespace {

using QuaskTesting::Arguments;
using QuaskTesting::Finished;

class StatOptions : public QuaskTesting::StatTest
{
protected:
    void expectRefused(Arguments const& arguments, std::string const& reason,
                       int exitStatus = 1) const
    {
        Finished const run = stat(arguments);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, "quask-stat: " + reason + "\nTry 'quask-stat --help'.\n");
        EXPECT_EQ(run.exitStatus, exitStatus);
    }
};

TEST_F(StatOptions, ThatContradictEachOtherAreRefused)
{
    expectRefused({"-J", "-r"}, "-J and -r exclude each other");
    expectRefused({"-m", "-v"}, "of -H, -m, -v and --check only one can be asked for");
    expectRefused({"--check", "-H"}, "of -H, -m, -v and --check only one can be asked for", 3);
    expectRefused({"-c", "3"}, "-c needs -i");
    expectRefused({"-v", "-i", "1"}, "-i, -n, -o and -r are for rows");
    expectRefused({"-m", "-o", "NAME"}, "-i, -n, -o and -r are for rows");
    expectRefused({"-v", "-J", "-n"}, "-i, -n, -o and -r are for rows");
    expectRefused({"-m", "-J"}, "-J is for rows and -v");
    expectRefused({"--check", "-J"}, "-J is for rows and -v", 3);
    expectRefused({"a", "b"}, "there is more than one EXPR");
}

TEST_F(StatOptions, TakeOnlyNumbersThatMakeSense)
{
    for (char const* const text : {"", "0", "-1", "1x", "nan", "inf", "86401"}) {
        expectRefused({"-i", text}, std::string("not a number of seconds: ") + text);
    }
    for (char const* const text : {"", "0", "-1", "1.5", "99999999999999999999"}) {
        expectRefused({"-i", "1", "-c", text}, std::string("not a number of intervals: ") + text);
    }
    for (char const* const text : {"", "101", "90,80", "90,", "a,b", "1,2,3"}) {
        expectRefused({std::string("--check=") + text},
                      std::string("not two limits from 0 to 100, the lower one first: ") + text, 3);
    }
}

TEST_F(StatOptions, ThatAreNotKnownAreRefused)
{
    Finished const run = stat({"-x"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, std::string(QUASK_STAT_UNDER_TEST) +
                           ": invalid option -- 'x'\nTry 'quask-stat --help'.\n");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(StatOptions, HelpAndVersionNeedNoTables)
{
    EXPECT_TRUE(stat({"-h"}).out.starts_with("Description:\n   quask-stat shows"));
    EXPECT_EQ(stat({"--version"}).out, "quask-stat " QUASK_VERSION "\n");
    EXPECT_EQ(stat({"-V"}).exitStatus, 0);
}

TEST_F(StatOptions, ListTheColumns)
{
    Finished const run = stat({"-H"});
    EXPECT_TRUE(run.out.starts_with("NAME          name of the table\n")) << run.out;
    EXPECT_EQ(std::ranges::count(run.out, '\n'), 22);
    EXPECT_EQ(run.exitStatus, 0);
}

}  // namespace
