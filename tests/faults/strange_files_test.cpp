// What has the name of a table's file and is not a file that can be read.

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "faults/blocked_scan.h"
#include "faults/faults_fixture.h"
#include "faults/full_file_system.h"
#include "support/mapping_client.h"
#include "support/other_user.h"
#include "support/own_namespaces.h"

namespace {

using QuaskTesting::BlockedScan;
using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using QuaskTesting::TableFile;
using testing::HasSubstr;

std::string const noFigures =
    "Capacity: slots:NA buckets:NA primary_notifications:NA secondary_notifications:NA\n"
    "Occupied slots: NA\n";

class StrangeFiles : public QuaskTesting::FaultsTest
{
protected:
    std::string const feed = root.path() + "/feed";
};

TEST_F(StrangeFiles, ALinkByASlotFilesNameIsNotFollowed)
{
    makeSmall("feed");
    std::string const secret = root.writeFile("secret", std::string(4096, 's'));
    std::filesystem::remove(feed + "/slots");
    std::filesystem::create_symlink(secret, feed + "/slots");
    expectFinished(quask({"feed"}), "", "Error attaching to Quask feed\n", 1);
    expectFinished(quask({"-x", "feed"}), "", "Error attaching Quask reader for feed\n", 1);
    expectFinished(quask({"-w", "feed"}),
                   title("feed") +
                       "Capacity: slots:NA buckets:NA primary_notifications:0 "
                       "secondary_notifications:0\nOccupied slots: NA\nClients: None\n\n",
                   "", 0);
    if (QuaskTesting::inOwnNamespaces()) {
        expectFinished(quask({"-a"}), "No Quasks\n", "", 0);
    }
}

TEST_F(StrangeFiles, ALinkByAVandralFilesNameIsNotFollowed)
{
    makeSmall("feed");
    std::filesystem::rename(feed + "/vandral.2", feed + "/real");
    std::filesystem::create_symlink("real", feed + "/vandral.2");
    expectFinished(quask({"-x", "feed"}), "", "Error attaching Vandral reader for feed\n", 1);
    expectFinished(quask({"feed"}), smallScan, "", 0);
}

// The client still holds the files of a table whose directory is gone.
TEST_F(StrangeFiles, ALinkInPlaceOfADirectoryIsNotFollowed)
{
    if (!QuaskTesting::inOwnNamespaces()) {
        GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
    }
    makeSmall("group/feed");
    MappingClient const client({root.path() + "/group/feed/slots:r"});
    std::filesystem::remove_all(root.path() + "/group");
    makeSmall("elsewhere/feed");
    std::filesystem::create_symlink("elsewhere", root.path() + "/group");
    EXPECT_THAT(quask({"-a"}).out,
                HasSubstr(title("group/feed") + noFigures + "Writer: None\nShadow: None\n"));
}

TEST_F(StrangeFiles, APipeOrADeviceIsNotRead)
{
    makeSmall("feed");
    std::filesystem::remove(feed + "/slots");
    ASSERT_EQ(mkfifo((feed + "/slots").c_str(), 0600), 0);
    expectFinished(quask({"feed"}), "", "Error attaching to Quask feed\n", 1);
    expectFinished(quask({"-x", "feed"}), "", "Error attaching Quask reader for feed\n", 1);
}

TEST_F(StrangeFiles, WhyAFileCannotBeReadIsSaidAtLevelFive)
{
    auto const reason = [this](Command command) {
        command.environment["DOVAN_DEBUG"] = "5";
        return QuaskTesting::run(command).err;
    };
    std::string const path = feed + "/slots";
    auto const failed = [&path](std::string const& operation, std::string const& why) {
        return HasSubstr("Quask-feed 5: QuaskMem::" + operation + "() failed: " + why +
                         " filename: " + path + "\n");
    };
    small().resize(TableFile::slots, 64 << 20).writeTo(root, "feed");

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    Command fewDescriptors = command({"-x", "feed"});
    fewDescriptors.limits[RLIMIT_NOFILE] = 5;
    EXPECT_THAT(reason(fewDescriptors),
                HasSubstr("QuaskMem::memSize() failed: Too many open files filename: " + feed +
                          "/vandral.1\n"));
    Command littleSpace = command({"feed"});
    littleSpace.limits[RLIMIT_AS] = 32 << 20;
    EXPECT_THAT(reason(littleSpace), failed("attach", "Cannot allocate memory"));
#endif
    std::filesystem::remove(path);
    EXPECT_THAT(reason(command({"feed"})), failed("memSize", "No such file or directory"));
    std::filesystem::create_symlink("buckets", path);
    EXPECT_THAT(reason(command({"feed"})), failed("memSize", "Too many levels of symbolic links"));
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    EXPECT_THAT(reason(command({"feed"})), failed("memSize", "Not a regular file"));
    std::filesystem::remove(path);

    if (!QuaskTesting::OtherUser::exists()) {
        GTEST_SKIP() << "the system lets nobody become another user";
    }
    makeSmall("feed");
    chmod(root.path().c_str(), 0755);
    chmod(path.c_str(), 0);
    QuaskTesting::OtherUser const user(QUASK_UNDER_TEST);
    EXPECT_THAT(reason(user.command(command({"feed"}))), failed("attach", "Permission denied"));
}

class UnreadablePages : public QuaskTesting::UnreadablePagesTest
{};

TEST_F(UnreadablePages, LeaveOnlyTheirFiguresOutOfTheReportOnATable)
{
    makeTableWithHoles(TableFile::vandral2, 0);
    expectFinished(quask({"-w", "full/feed"}),
                   title("full/feed") +
                       "Capacity: slots:1024 buckets:2000 primary_notifications:NA "
                       "secondary_notifications:NA\nOccupied slots: 1\nClients: None\n\n",
                   "", 0);
}

TEST_F(UnreadablePages, OfTheSlotFileLeaveItsFiguresOut)
{
    makeTableWithHoles(TableFile::slots, 0);
    expectFinished(quask({"-w", "full/feed"}),
                   title("full/feed") +
                       "Capacity: slots:NA buckets:NA primary_notifications:0 "
                       "secondary_notifications:0\nOccupied slots: NA\nClients: None\n\n",
                   "", 0);
}

TEST_F(UnreadablePages, DoNotEndTheReportOnAllTables)
{
    makeTableWithHoles(TableFile::vandral2, 0);
    makeSmall("feed");
    MappingClient const client({root.path() + "/full/feed/slots:r"});
    expectFinished(quask({"-a"}),
                   title("feed") +
                       "Capacity: slots:1024 buckets:1 primary_notifications:0 "
                       "secondary_notifications:0\nOccupied slots: 1\nClients: None\n\n" +
                       title("full/feed") +
                       "Capacity: slots:1024 buckets:2000 primary_notifications:NA "
                       "secondary_notifications:NA\nOccupied slots: 1\nWriter: None\n"
                       "Shadow: None\nKeyshadow: None\nReader: mapping_client-" +
                       std::to_string(client.pid()) + "(mapping_client) \n\n",
                   "", 0);
}

TEST_F(UnreadablePages, EndTheHeaderReportWithALineThatNamesTheFile)
{
    makeTableWithHoles(TableFile::vandral2, 0);
    expectFinished(quask({"-x", "full/feed"}), "", unreadable("vandral.2"), 1);
}

TEST_F(UnreadablePages, EndAScanAfterTheLinesBefore)
{
    makeTableWithHoles(TableFile::buckets, 8192);
    expectFinished(quask({"full/feed"}), "bucket[1] 0-->00000000 ffffffff --> none\n",
                   unreadable("buckets"), 1);
}

// How the parent left the signal that a load from a cut file raises.
TEST_F(StrangeFiles, AParentThatBlocksOrIgnoresSigbusDoesNotHideThatAFileIsCutShort)
{
    large().writeTo(root, "feed");
    std::string const slots = feed + "/slots";
    auto const size = std::filesystem::file_size(slots);
    for (char const* const option : {"--block-signal=BUS", "--ignore-signal=BUS"}) {
        large().writeTo(root, "feed");
        Command command = this->command({"feed"});
        command.words.insert(command.words.begin(), {"env", option});
        BlockedScan scan(command);
        std::filesystem::resize_file(slots, size / 2 / 4096 * 4096);
        Finished const finished = scan.finish();
        EXPECT_EQ(finished.err,
                  "Quask table file " + slots + " was cut short while it was being read\n");
        EXPECT_EQ(finished.exitStatus, 1);
    }
}

}  // namespace
