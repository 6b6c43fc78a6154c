// Root directories, names and permissions out of the ordinary.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include <sys/stat.h>

#include "faults/faults_fixture.h"
#include "support/mapping_client.h"
#include "support/other_user.h"
#include "support/own_namespaces.h"

namespace {

using QuaskTesting::bytesOf;
using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::OtherUser;
using testing::HasSubstr;
using testing::StartsWith;

std::string const figures =
    "Capacity: slots:1024 buckets:1 primary_notifications:0 secondary_notifications:0\n"
    "Occupied slots: 1\n";

class RootDirectory : public QuaskTesting::FaultsTest
{
protected:
    // Runs with the directory `relative` below the private root as the root directory.
    Finished quaskOn(std::string const& relative, std::vector<std::string> arguments) const
    {
        Command command = this->command(std::move(arguments));
        command.environment["QUASK_TEST_ROOT"] = root.path() + "/" + relative;
        return QuaskTesting::run(command);
    }

    // Tables t0, t1, ... with these files of one table, so that many take little memory.
    void makeTables(int count, std::vector<std::string> const& files) const
    {
        makeSmall("t0");
        for (int i = 1; i < count; ++i) {
            std::string const table = root.path() + "/t" + std::to_string(i);
            std::filesystem::create_directory(table);
            for (std::string const& file : files) {
                std::filesystem::create_hard_link(root.path() + "/t0" + file, table + file);
            }
        }
    }
};

TEST_F(RootDirectory, ThatIsASymbolicLinkIsFollowed)
{
    makeSmall("real/feed");
    std::filesystem::create_symlink("real", root.path() + "/link");
    expectFinished(quaskOn("link", {"feed"}), smallScan, "", 0);
    EXPECT_THAT(quaskOn("link", {"-x", "feed"}).out,
                StartsWith("Quask table \"" + root.path() + "/link/feed\"\n"));
}

TEST_F(RootDirectory, ThatIsASymbolicLinkHidesTheClients)
{
    makeSmall("real/feed");
    std::filesystem::create_symlink("real", root.path() + "/link");
    QuaskTesting::MappingClient const client({root.path() + "/link/feed/slots:r"});
    expectFinished(
        quaskOn("link", {"-w", "feed"}),
        "Quask table \"" + root.path() + "/link/feed\"\n" + figures + "Clients: None\n\n", "", 0);
}

TEST_F(RootDirectory, ThatIsMissingAFileOrABrokenLinkEndsTheSearch)
{
    root.writeFile("file", "");
    std::filesystem::create_symlink("nowhere", root.path() + "/link");
    for (char const* const name : {"missing", "file", "link"}) {
        expectFinished(quaskOn(name, {"feed"}), "", "Error searching for tables\n", 1);
    }
}

TEST_F(RootDirectory, ThatIsMissingEndsTheReportOnAllTables)
{
    if (!QuaskTesting::inOwnNamespaces()) {
        GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
    }
    Command command = this->command({"-a"});
    command.environment["QUASK_TEST_ROOT"] = "/nonexistent";
    expectFinished(QuaskTesting::run(command), "",
                   "Error searching for tables\nError adding clientless Quasks\n", 1);
}

TEST_F(RootDirectory, ThatIsEmptyHoldsNoTable)
{
    root.makeDirectory("empty");
    expectFinished(quaskOn("empty", {"feed"}), "", "No table was found.\n", 1);
}

TEST_F(RootDirectory, WithAHundredThousandTablesIsListed)
{
    constexpr int count = 100000;
    makeTables(count, {"/slots"});
    makeSmall("last");
    Finished const list = quask({});
    EXPECT_EQ(list.exitStatus, 1);
    EXPECT_THAT(list.err, StartsWith("More than one table was found. Try again using one of the "
                                     "following tables:\n  - "));
    EXPECT_EQ(std::count(list.err.begin(), list.err.end(), '\n'), count + 2);
    expectFinished(quask({"last"}), smallScan, "", 0);
}

TEST_F(RootDirectory, WithAHundredThousandTablesIsReportedOn)
{
    if (!QuaskTesting::inOwnNamespaces()) {
        GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
    }
    constexpr int count = 100000;
    makeTables(count, {"/buckets", "/slots", "/vandral.1", "/vandral.2"});
    Finished const report = quask({"-a"});
    EXPECT_EQ(report.exitStatus, 0);
    EXPECT_EQ(report.err, "");
    EXPECT_EQ(std::count(report.out.begin(), report.out.end(), '\n'), 5 * count);
    std::string const title = "Quask table \"" + root.path();
    for (char const* const name : {"/t0", "/t99999"}) {
        EXPECT_THAT(report.out, HasSubstr(title + name + "\"\n" + figures + "Clients: None\n\n"));
    }
}

TEST_F(RootDirectory, WithATableSixtyFourLevelsBelowItIsSearched)
{
    std::string deep;
    for (int level = 1; level < 64; ++level) {
        deep += "level/";
    }
    makeSmall(deep + "feed");
    expectFinished(quask({"feed"}), smallScan, "", 0);
    expectFinished(quask({"/" + deep + "feed"}), smallScan, "", 0);
}

TEST_F(RootDirectory, MayHoldTablesOfEveryName)
{
    for (std::string const& name :
         {std::string("two words"), std::string("two\nlines"), std::string("\"quotes\" 'both'"),
          std::string("h\xc3\xb6he"), std::string("\xff\xfe"), std::string("-x"),
          std::string("%s%n"), std::string(255, 'n')}) {
        SCOPED_TRACE(name);
        makeSmall(name);
        expectFinished(quask({"--", name}), smallScan, "", 0);
        Finished const headers = quask({"-x", "--", name});
        EXPECT_THAT(headers.out,
                    StartsWith("Quask table \"" + root.path() + "/" + name + "\"\n\n"));
        EXPECT_EQ(headers.exitStatus, 0);
        expectFinished(
            quask({"-w", "--", name}),
            "Quask table \"" + root.path() + "/" + name + "\"\n" + figures + "Clients: None\n\n",
            "", 0);
        std::filesystem::remove_all(root.path() + "/" + name);
    }
}

// As an ordinary user on files that root keeps for itself.
class Forbidden : public RootDirectory
{
protected:
    void SetUp() override
    {
        if (!OtherUser::exists()) {
            GTEST_SKIP() << "the system lets nobody become another user";
        }
        chmod(root.path().c_str(), 0755);
        makeSmall("feed");
        expectFinished(asOtherUser({"feed"}), smallScan, "", 0);
    }

    Finished asOtherUser(std::vector<std::string> arguments) const
    {
        return QuaskTesting::run(user.command(command(std::move(arguments))));
    }

    void forbid(std::string const& relative) const
    {
        chmod((root.path() + "/" + relative).c_str(), 0);
    }

    OtherUser const user{QUASK_UNDER_TEST};
};

TEST_F(Forbidden, AnUnreadableTableFileCannotBeScanned)
{
    for (char const* const file : {"slots", "buckets"}) {
        forbid(std::string("feed/") + file);
        expectFinished(asOtherUser({"feed"}), "", "Error attaching to Quask feed\n", 1);
        chmod((root.path() + "/feed/" + file).c_str(), 0644);
    }
}

TEST_F(Forbidden, AnUnreadableTableFileHasNoFigures)
{
    forbid("feed/slots");
    forbid("feed/vandral.1");
    expectFinished(asOtherUser({"-w", "feed"}),
                   "Quask table \"" + root.path() +
                       "/feed\"\nCapacity: slots:NA buckets:NA primary_notifications:NA "
                       "secondary_notifications:NA\nOccupied slots: NA\nClients: None\n\n",
                   "", 0);
}

TEST_F(Forbidden, AnUnreadableTableDirectoryIsLeftOut)
{
    forbid("feed");
    expectFinished(asOtherUser({"feed"}), "", "No table was found.\n", 1);
}

TEST_F(Forbidden, AnUnreadableRootDirectoryEndsTheSearch)
{
    chmod(root.path().c_str(), 0);
    expectFinished(asOtherUser({"feed"}), "", "Error searching for tables\n", 1);
}

TEST_F(Forbidden, TheProcessesOfOthersAreMissingFromTheReport)
{
    QuaskTesting::MappingClient const client({root.path() + "/feed/slots:r"});
    Command command = user.command(this->command({"-w", "feed"}));
    command.environment.erase("J5_CHROOT");
    command.unset.push_back("J5_CHROOT");
    expectFinished(QuaskTesting::run(command),
                   "You should run this command as root.\nQuask table \"" + root.path() +
                       "/feed\"\n" + figures + "Clients: None\n\n",
                   "", 0);
}

}  // namespace
