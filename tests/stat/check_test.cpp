// quask-stat --check, as monitoring calls it.

#include <filesystem>

#include "stat/stat_fixture.h"

namespace {

using QuaskTesting::Arguments;
using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using QuaskTesting::TableImage;

class Check : public QuaskTesting::StatTest
{
protected:
    void expect(Arguments arguments, std::string const& out, int exitStatus) const
    {
        arguments.insert(arguments.begin(), "--check");
        Finished const run = stat(arguments);
        EXPECT_EQ(run.out, out);
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.exitStatus, exitStatus);
    }

    void make(std::string const& name, std::uint32_t used) const
    {
        TableImage image = ordinary();
        image.slotsHeader.maxSlots = 32;
        image.slotsHeader.occupiedSlots = used;
        image.slotsHeader.freeHead = 31;
        image.writeTo(root, name);
    }
};

TEST_F(Check, IsOkWhenAllTablesAre)
{
    make("feed/eq", 8);
    expect({}, "QUASK OK: 1 table\n", 0);
    make("feed/fx", 8);
    expect({}, "QUASK OK: 2 tables\n", 0);
    expect({"fx"}, "QUASK OK: 1 table\n", 0);
}

TEST_F(Check, WarnsOfTablesThatAreNearlyFull)
{
    make("feed/eq", 8);
    make("feed/fx", 29);
    expect({},
           "QUASK WARNING: 1 of 2 tables not all right\n"
           "feed/fx: nearly full; writer: none; used: 90%\n",
           1);
    expect({"eq"}, "QUASK OK: 1 table\n", 0);
}

TEST_F(Check, TakesLimits)
{
    make("feed/eq", 8);
    EXPECT_EQ(stat({"--check=26"}).exitStatus, 0);
    EXPECT_EQ(stat({"--check=25"}).exitStatus, 1);
    EXPECT_EQ(stat({"--check=20,26"}).exitStatus, 1);
    Finished const run = stat({"--check=20,25"});
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(run.out,
              "QUASK CRITICAL: 1 of 1 table not all right\n"
              "feed/eq: nearly full; writer: none; used: 25%\n");
}

TEST_F(Check, IsCriticalWhenAWriterIsDead)
{
    TableImage image = ordinary();
    image.bucketsHeader.ownerPid = 0x7ffffffe;
    image.writeTo(root, "a\x1b[1mb");
    make("feed/fx", 31);
    expect({},
           "QUASK CRITICAL: 2 of 2 tables not all right\n"
           "a\\x1b[1mb: writer dead; writer: dead 2147483646; used: 20%\n"
           "feed/fx: nearly full; writer: none; used: 96%\n",
           2);
}

TEST_F(Check, CannotTellOfATableThatIsUnreadable)
{
    make("feed/fx", 31);
    ordinary().without(QuaskTesting::TableFile::slots).writeTo(root, "raw");
    expect({},
           "QUASK UNKNOWN: 2 of 2 tables not all right\n"
           "feed/fx: nearly full; writer: none; used: 96%\n"
           "raw: unreadable (slots: No such file or directory); writer: none\n",
           3);
}

TEST_F(Check, CannotTellWithoutTables)
{
    expect({"feed"}, "QUASK UNKNOWN: no table was found\n", 3);
    std::string const path = root.path();
    std::filesystem::remove_all(path);
    Finished const run = stat({"--check"});
    EXPECT_EQ(run.out, "QUASK UNKNOWN: the root directory cannot be searched\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 3);
    std::filesystem::create_directory(path);
}

TEST_F(Check, SaysWhichTableIsOnlyHeld)
{
    make("feed/eq", 8);
    MappingClient const client = clientOf("feed/eq", reading);
    std::filesystem::remove_all(root.path() + "/feed");
    expect({}, "QUASK WARNING: 1 of 1 table not all right\nfeed/eq: stale clients\n", 1);
}

}  // namespace
