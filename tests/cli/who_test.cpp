// The client reports from the command line.

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <iterator>

#include <sys/stat.h>

#include "support/mapping_client.h"
#include "support/other_user.h"
#include "support/own_namespaces.h"
#include "support/quask_program.h"
#include "support/table_files.h"

namespace {

using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using QuaskTesting::OtherUser;
using QuaskTesting::TableImage;
using Arguments = std::vector<std::string>;

class WhoCommand : public testing::Test
{
protected:
    WhoCommand() { TableImage::of("int", 4).buckets(4).slots(8).writeTo(root, "feed"); }

    Finished quask(Arguments const& arguments) const
    {
        return QuaskTesting::run(QuaskTesting::quask(root, arguments));
    }

    MappingClient clientOf(Arguments files) const
    {
        for (std::string& file : files) {
            file.insert(0, root.path() + "/feed/");
        }
        return MappingClient(files);
    }

    static std::string shown(MappingClient const& client)
    {
        return "mapping_client-" + std::to_string(client.pid()) + "(mapping_client) ";
    }

    std::string report(std::string const& clients) const
    {
        return "Quask table \"" + root.path() +
               "/feed\"\n"
               "Capacity: slots:1024 buckets:4 primary_notifications:0 secondary_notifications:0\n"
               "Occupied slots: 0\n" +
               clients + "\n";
    }

    std::string const noClients = "Clients: None\n";

    QuaskTesting::PrivateRoot root;
};

TEST_F(WhoCommand, ListsTheClientsOfTheTableByTheirRoles)
{
    MappingClient const writer = clientOf({"slots:rw", "vandral.1:rw"});
    MappingClient const shadow = clientOf({"vandral.1:r", "slots:r"});
    MappingClient const keyshadow = clientOf({"orvik:r", "vandral.1:r", "slots:r"});
    MappingClient const reader = clientOf({"slots:r"});
    Finished const run = quask({"--who", "feed"});
    EXPECT_EQ(run.out,
              report("Writer: " + shown(writer) + "\nShadow: " + shown(shadow) +
                     "\nKeyshadow: " + shown(keyshadow) + "\nReader: " + shown(reader) + "\n"));
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(WhoCommand, ComesBeforeTheHeaderReportInWhicheverOrder)
{
    EXPECT_EQ(quask({"-w", "-x", "feed"}).out, report(noClients));
    EXPECT_EQ(quask({"-x", "-w", "feed"}).out, report(noClients));
}

TEST_F(WhoCommand, AnOrdinaryUserIsWarnedBeforeTheReport)
{
    if (!OtherUser::exists()) {
        GTEST_SKIP() << "the system lets nobody become another user";
    }
    OtherUser const user(QUASK_UNDER_TEST);
    ASSERT_EQ(chmod(root.path().c_str(), 0755), 0);
    Command command = user.command(QuaskTesting::quask(root, {"-w", "feed"}));
    command.environment.erase("J5_CHROOT");
    command.unset.push_back("J5_CHROOT");
    Finished const run = QuaskTesting::run(command);
    EXPECT_EQ(run.out, "You should run this command as root.\n" + report(noClients));
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(WhoCommand, AReportsFileThatCannotBeOpenedIsAFailure)
{
    std::string const path = root.path() + "/none/report";
    Finished const run = quask({"-f", path});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "Error opening " + path + "\nFailed to initialize QuaskClientScanner.\n");
    EXPECT_EQ(run.exitStatus, 1);

    Command traced = QuaskTesting::quask(root, {"-f", path});
    traced.environment["DOVAN_DEBUG"] = "9";
    EXPECT_EQ(QuaskTesting::run(traced).err.find("/proc"), std::string::npos)
        << "no process is looked at";
}

class WhoAllCommand : public WhoCommand
{
protected:
    void SetUp() override
    {
        if (!QuaskTesting::inOwnNamespaces()) {
            GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
        }
    }
};

TEST_F(WhoAllCommand, ListsTablesWithoutClientsToo)
{
    Finished const run = quask({"--who-all"});
    EXPECT_EQ(run.out, report(noClients));
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(WhoAllCommand, IsWhatAReportsFileAsksForInThatFile)
{
    std::string const path = root.path() + "/report";
    std::ofstream(path) << std::string(100'000, '~');
    Finished const run = quask({"-f", path, "-x", "no such table"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
    std::ifstream file(path);
    std::string const text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(text, report(noClients)) << "what the file held before is gone";
}

TEST_F(WhoAllCommand, WarnsAnOrdinaryUserBeforeTheReport)
{
    if (!OtherUser::exists()) {
        GTEST_SKIP() << "the system lets nobody become another user";
    }
    OtherUser const user(QUASK_UNDER_TEST);
    ASSERT_EQ(chmod(root.path().c_str(), 0755), 0);
    Command command = user.command(QuaskTesting::quask(root, {"-a"}));
    command.environment.erase("J5_CHROOT");
    command.unset.push_back("J5_CHROOT");
    EXPECT_EQ(QuaskTesting::run(command).out,
              "You should run this command as root.\n" + report(noClients));
}

TEST_F(WhoAllCommand, DoesNotSearchForTheExpression)
{
    Command command = QuaskTesting::quask(root, {"-f", root.path() + "/report", "feed"});
    command.environment["QUASK_TEST_ROOT"] = "/nonexistent";
    EXPECT_EQ(QuaskTesting::run(command).err,
              "Error searching for tables\nError adding clientless Quasks\n");
}

TEST_F(WhoAllCommand, EndsAtATableWhosePathIsNotLongerThanTheRootDirectorys)
{
    MappingClient const writer = clientOf({"slots:rw", "vandral.1:rw"});
    Command command = QuaskTesting::quask(root, {"-a"});
    command.environment["QUASK_TEST_ROOT"] = root.path() + "/feed";
    Finished const run = QuaskTesting::run(command);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("std::out_of_range"), std::string::npos) << run.err;
    EXPECT_EQ(run.signal, SIGABRT);
}

}  // namespace
