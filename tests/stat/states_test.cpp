// Every state that a table can be in, brought about with real files and processes.

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iterator>

#include <sys/stat.h>

#include "stat/stat_fixture.h"
#include "support/other_user.h"
#include "support/waiting.h"

namespace {

using QuaskTesting::Arguments;
using QuaskTesting::bytesOf;
using QuaskTesting::ChildProcess;
using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using QuaskTesting::OtherUser;
using QuaskTesting::TableFile;
using QuaskTesting::TableImage;

class States : public QuaskTesting::StatTest
{
protected:
    std::string directory() const { return root.path() + "/feed"; }

    void make(TableImage const& image) const { image.writeTo(root, "feed"); }

    // The cells of the only row, with one space between them.
    std::string row(std::string const& columns) const
    {
        std::string const text = stat({"-n", "-o", columns}).out;
        std::string row;
        std::ranges::unique_copy(text.substr(0, text.find('\n')), std::back_inserter(row),
                                 [](char a, char b) { return a == ' ' && b == ' '; });
        return row.substr(row.starts_with(' ') ? 1 : 0);
    }

    void expectRow(std::string const& columns, std::string const& expected) const
    {
        EXPECT_EQ(row(columns), expected);
    }
};

TEST_F(States, AWriterAndReadersAreFine)
{
    make(ordinary());
    MappingClient const writer = clientOf("feed", writing);
    MappingClient const reader = clientOf("feed", reading);
    expectRow("WRITER,READERS,STATE", shown(writer) + " 1 ok");
}

TEST_F(States, AKilledWriterIsDeadAlsoWhileItsParentDoesNotKnow)
{
    make(ordinary());
    MappingClient writer = clientOf("feed", writing);
    std::string const pid = std::to_string(writer.pid());
    TableImage image = ordinary();
    auto const owner = static_cast<std::uint32_t>(writer.pid());
    image.patch(TableFile::buckets, QuaskTesting::BucketsOffset::ownerPid, bytesOf(owner));
    make(image);
    writer.kill(SIGKILL);
    while (!QuaskTesting::hasEnded(writer.pid())) {
    }
    expectRow("WRITER,STATE", "dead " + pid + " writer dead");
    writer.finish();
    expectRow("WRITER,STATE", "dead " + pid + " writer dead");
}

TEST_F(States, AnOwnerThatCannotBeAProcessIsDead)
{
    TableImage image = ordinary();
    image.bucketsHeader.ownerPid = 0xfffffffe;
    make(image);
    expectRow("WRITER,STATE", "dead 4294967294 writer dead");
    image.bucketsHeader.ownerPid = 0;
    make(image);
    expectRow("WRITER,STATE", "none ok");
}

TEST_F(States, TwoProcessesThatWriteAreTwoWriters)
{
    make(ordinary());
    MappingClient const first = clientOf("feed", writing);
    MappingClient const second = clientOf("feed", writing);
    expectRow("WRITER,STATE", shown(first) + "," + shown(second) + " two writers");
}

TEST_F(States, WhoHoldsTheFilesOfAReplacedTableIsStaleAndNoClient)
{
    make(ordinary());
    MappingClient const old = clientOf("feed", reading);
    MappingClient const oldWriter = clientOf("feed", writing);
    make(ordinary());
    MappingClient const young = clientOf("feed", reading);
    expectRow("NAME,WRITER,READERS,STALE,STATE", "feed none 1 2 stale clients");
}

TEST_F(States, ARemovedTableThatIsHeldStillHasARow)
{
    make(ordinary());
    MappingClient const old = clientOf("feed", reading);
    std::filesystem::remove_all(directory());
    EXPECT_EQ(stat({"-r"}).out,
              "NAME USED MAX USE% LOAD WRITER READERS STALE STATE\n"
              "feed - - - - none 0 1 stale\\x20clients\n");
    EXPECT_EQ(stat({"-rn", "fee"}).out, "feed - - - - none 0 1 stale\\x20clients\n");
    EXPECT_EQ(stat({"-rn", "eq"}).err, "No table was found.\n");
    EXPECT_EQ(stat({"-J", "-o", "NAME,USED,SIZE,STALE"}).out,
              "{\n"
              "   \"tables\": [\n"
              "      {\n"
              "         \"name\": \"feed\",\n"
              "         \"used\": null,\n"
              "         \"size\": null,\n"
              "         \"stale\": 1\n"
              "      }\n"
              "   ],\n"
              "   \"unread_processes\": 0\n"
              "}\n");
}

TEST_F(States, FilesThatOnlyHaveTheNamesOfTablesAreNobodys)
{
    make(ordinary());
    make(ordinary());  // removes the first
    std::string const elsewhere = root.makeDirectory("../" + root.path().substr(9) + "-other");
    ordinary().writeTo(elsewhere);
    MappingClient const client({elsewhere + "/slots:r", elsewhere + "/vandral.1:rw"});
    std::filesystem::remove_all(elsewhere);
    expectRow("WRITER,READERS,STALE,STATE", "none 0 0 ok");
}

TEST_F(States, AFullTableIsFullAndOneBeforeThatNearlyFull)
{
    TableImage image = ordinary();
    image.slotsHeader.maxSlots = 32;
    image.slotsHeader.occupiedSlots = 32;
    image.slotsHeader.freeHead = QuaskTesting::noSlot;
    make(image);
    expectRow("USED,MAX,USE%,STATE", "32 32 100% full");
    image.slotsHeader.occupiedSlots = 31;
    image.slotsHeader.freeHead = 31;
    make(image);
    expectRow("USED,MAX,USE%,STATE", "31 32 96% nearly full");
}

TEST_F(States, FilesOfDifferentMakingsAreMixed)
{
    TableImage image = ordinary();
    image.vandral2.orvik += 1;
    make(image);
    expectRow("USED,STATE", "20 mixed");
}

TEST_F(States, ATableWhoseHeadersFailTheirChecksIsUnreadableWithTheReason)
{
    TableImage image = ordinary();
    image.slotsHeader.hash = 7;
    make(image);
    std::string const found = row("USED,STATE");
    EXPECT_TRUE(found.starts_with("- unreadable (SlotTable::Header::validate() checksum fail: "))
        << found;
    image.bucketsHeader.version = 2;
    make(image);
    expectRow("USED,NOTIFICATIONS,STATE",
              "- 0 unreadable (BucketTable::validate() bad version: 2)");
}

TEST_F(States, AShortOrEmptyOrMissingFileMakesATableUnreadable)
{
    TableImage image = TableImage::of("char[64]", 64).buckets(4).slots(100);
    make(image.resize(TableFile::slots, 4000));
    expectRow("USED,STATE", "- unreadable (slots: 4000 bytes, which is too short for 100 slots)");
    make(ordinary().resize(TableFile::vandral1, 0));
    expectRow("USED,STATE", "20 unreadable (vandral.1: the file is empty)");
    make(ordinary().without(TableFile::buckets));
    expectRow("USED,STATE", "- unreadable (buckets: No such file or directory)");
}

TEST_F(States, AFileThatMayNotBeReadMakesATableUnreadable)
{
    if (!OtherUser::exists()) {
        GTEST_SKIP() << "the system lets nobody become another user";
    }
    make(ordinary());
    chmod(root.path().c_str(), 0755);
    chmod((directory() + "/slots").c_str(), 0);
    OtherUser const user(QUASK_STAT_UNDER_TEST);
    Finished const run =
        QuaskTesting::run(user.command(command({"-rn", "-o", "USED,WRITER,STATE"})));
    EXPECT_EQ(run.out, "- none unreadable\\x20(slots:\\x20Permission\\x20denied)\n");
}

TEST_F(States, WhereNoProcessCanBeLookedIntoThatIsSaidOnce)
{
    make(ordinary());
    MappingClient const writer = clientOf("feed", writing);
    Command command = this->command({"-r", "-o", "WRITER,READERS,STALE,STATE"});
    command.lacking = QuaskTesting::rightsToLookIntoOthers();
    Finished const run = QuaskTesting::run(command);
    // The test's process, the first one in these namespaces, and the writer.
    EXPECT_EQ(run.err,
              "quask-stat: 3 processes could not be looked into; clients may be missing\n");
    EXPECT_EQ(run.out,
              "WRITER READERS STALE STATE\nstat_test-" + std::to_string(getpid()) + "? 0 0 ok\n");
    EXPECT_EQ(run.exitStatus, 0);
    command.words = this->command({"-J", "-o", "NAME"}).words;
    EXPECT_TRUE(QuaskTesting::run(command).out.ends_with("   ],\n   \"unread_processes\": 3\n}\n"));
}

// A client in a mount namespace of its own, in which `set` is run before.
class ElsewhereClient : public ChildProcess
{
public:
    ElsewhereClient(std::string const& commands, std::string const& files)
        : ChildProcess({.words = {"/bin/sh", "-c",
                                  "exec unshare -m sh -ec '" + commands +
                                      "; exec " MAPPING_CLIENT " " + files + "'"}})
    {
        EXPECT_EQ(readLine(), "ready");
    }
};

TEST_F(States, FilesOfTheSameNamesInAnotherMountNamespaceAreSomebodyElses)
{
    make(ordinary());
    std::string const feed = directory();
    ElsewhereClient const client(
        "cp -a " + feed + " " + feed + ".copy; mount -t tmpfs none " + root.path() + "; mkdir " +
            feed + "; for f in slots vandral.1; do head -c 4096 /dev/zero > " + feed + "/$f; done",
        feed + "/slots:rw " + feed + "/vandral.1:rw");
    std::filesystem::remove_all(feed + ".copy");
    expectRow("NAME,WRITER,STALE,STATE", "feed none 0 ok");
    // And also when they have been removed there.
    std::string const there = "/proc/" + std::to_string(client.pid()) + "/root" + feed;
    ASSERT_GT(std::filesystem::remove_all(there), 0u);
    expectRow("NAME,WRITER,STALE,STATE", "feed none 0 ok");
}

TEST_F(States, RemovedFilesInAnotherMountNamespaceMakeNoRow)
{
    std::string const feed = directory();
    ElsewhereClient const client("mount -t tmpfs none " + root.path() + "; mkdir " + feed +
                                     "; head -c 4096 /dev/zero > " + feed + "/slots",
                                 feed + "/slots:r");
    std::string const there = "/proc/" + std::to_string(client.pid()) + "/root" + feed;
    ASSERT_GT(std::filesystem::remove_all(there), 0u);
    EXPECT_EQ(stat({}).err, "No table was found.\n");
}

TEST_F(States, TheSameFilesByAnotherNameInAnotherMountNamespaceAreTheTables)
{
    make(ordinary());
    std::string const other = root.makeDirectory("no_table");
    ElsewhereClient const client("mount --bind " + directory() + " " + other,
                                 other + "/slots:rw " + other + "/vandral.1:rw");
    expectRow("NAME,WRITER,STALE,STATE", "feed " + shown(client) + " 0 ok");
}

}  // namespace
