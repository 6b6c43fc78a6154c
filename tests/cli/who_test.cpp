// The client reports from the command line.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

#include "support/mapping_client.h"
#include "support/process_list_lock.h"
#include "support/quask_program.h"
#include "support/table_files.h"

namespace {

using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using QuaskTesting::ProcessListLock;
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

    // The report on all tables fails as long as a process that is not the test's has a table mapped
    // in a directory with a path as short as the root directory's: tries for a while.
    Finished quaskOnAllTables(Arguments const& arguments) const
    {
        Finished finished = quask(arguments);
        for (int attempts = 0; attempts < 100 && finished.signal == SIGABRT; ++attempts) {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            finished = quask(arguments);
        }
        return finished;
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

    ProcessListLock const lock{ProcessListLock::Mode::alone};
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
    Command command = QuaskTesting::quask(root, {"-w", "feed"});
    command.environment.erase("J5_CHROOT");
    command.unset.push_back("J5_CHROOT");
    if (getuid() == 0) {
        command.userId = 65534;
        ASSERT_EQ(chmod(root.path().c_str(), 0755), 0);
    }
    Finished const run = QuaskTesting::run(command);
    if (run.exitStatus == 126 || run.exitStatus == 127) {
        GTEST_SKIP() << "an ordinary user cannot run the program where it was built";
    }
    EXPECT_EQ(run.out, "You should run this command as root.\n" + report(noClients));
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(WhoCommand, OfAllTablesListsThoseWithoutClientsToo)
{
    Finished const run = quaskOnAllTables({"--who-all"});
    if (run.signal == SIGABRT) {
        GTEST_SKIP() << "a process that is not the test's has a table mapped";
    }
    EXPECT_NE(run.out.find(report(noClients)), std::string::npos) << run.out;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(WhoCommand, AReportsFileMakesItTheReportOnAllTablesInThatFile)
{
    std::string const path = root.path() + "/report";
    std::ofstream(path) << std::string(100'000, '~');
    Finished const run = quaskOnAllTables({"-f", path, "-x", "no such table"});
    if (run.signal == SIGABRT) {
        GTEST_SKIP() << "a process that is not the test's has a table mapped";
    }
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
    std::ifstream file(path);
    std::string const text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NE(text.find(report(noClients)), std::string::npos) << text;
    EXPECT_EQ(text.find('~'), std::string::npos) << "what the file held before is gone";
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

TEST_F(WhoCommand, OfAllTablesEndsAtATableWhosePathIsNotLongerThanTheRootDirectorys)
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
