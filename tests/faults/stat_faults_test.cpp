// The same faults as quask-stat meets them. Skipped where that is not built.

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

#include "faults/faults_fixture.h"
#include "support/other_user.h"
#include "support/own_namespaces.h"
#include "support/pipe.h"
#include "support/pseudo_terminal.h"
#include "support/small_file_system.h"
#include "support/waiting.h"

namespace {

using QuaskTesting::ChildProcess;
using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::Pipe;
using QuaskTesting::PseudoTerminal;
using QuaskTesting::SmallFileSystem;
using QuaskTesting::TableFile;
using QuaskTesting::TableImage;
using testing::HasSubstr;

class StatFaults : public QuaskTesting::FaultsTest
{
protected:
    void SetUp() override
    {
#ifdef QUASK_STAT_UNDER_TEST
        program = QUASK_STAT_UNDER_TEST;
        if (!QuaskTesting::inOwnNamespaces()) {
            GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
        }
#else
        GTEST_SKIP() << "quask-stat is not built";
#endif
    }

    Finished stat(std::vector<std::string> arguments) const
    {
        return run(command(std::move(arguments)));
    }

    // Runs with the shell's redirections.
    Finished redirected(std::string const& redirections, std::vector<std::string> arguments) const
    {
        Command command = this->command(std::move(arguments));
        command.words.insert(command.words.begin(),
                             {"/bin/sh", "-c", "exec \"$@\" " + redirections, "sh"});
        return run(command);
    }

    // A table of one element, which nobody has made.
    static TableImage ownerless()
    {
        TableImage image = small();
        image.bucketsHeader.ownerPid = 0;
        return image;
    }

    // The row of "feed" has this state, and that of "other" is as without the fault.
    void expectState(std::string const& state) const
    {
        ownerless().writeTo(root, "other");
        expectFinished(stat({"-rn", "-o", "NAME,STATE"}), "feed " + state + "\nother ok\n", "", 0);
    }

    std::string const feed = root.path() + "/feed";
};

TEST_F(StatFaults, ASlotFileCutShortBeforeMakesItsTableUnreadable)
{
    large().writeTo(root, "feed");
    std::filesystem::resize_file(feed + "/slots", 100000);
    Finished const check = stat({"--check"});
    EXPECT_THAT(check.out, HasSubstr("feed: unreadable (SlotTable::Header::validate() bad shmem "
                                     "size:100000 wanted:1440200 for 60000 slots); "));
    EXPECT_EQ(check.exitStatus, 3);
    expectState(
        "unreadable\\x20(SlotTable::Header::validate()\\x20bad\\x20shmem\\x20size:100000\\x20"
        "wanted:1440200\\x20for\\x2060000\\x20slots)");
}

TEST_F(StatFaults, AMissingFileMakesItsTableUnreadable)
{
    ownerless().without(TableFile::vandral2).writeTo(root, "feed");
    expectState("unreadable\\x20(vandral.2:\\x20No\\x20such\\x20file\\x20or\\x20directory)");
}

TEST_F(StatFaults, ALinkInPlaceOfAFileIsNotFollowed)
{
    ownerless().writeTo(root, "feed");
    std::filesystem::rename(feed + "/slots", feed + "/real");
    std::filesystem::create_symlink("real", feed + "/slots");
    expectState(
        "unreadable\\x20(slots:\\x20Too\\x20many\\x20levels\\x20of\\x20symbolic\\x20links)");
}

TEST_F(StatFaults, APipeInPlaceOfAFileIsNotRead)
{
    ownerless().without(TableFile::buckets).writeTo(root, "feed");
    ASSERT_EQ(mkfifo((feed + "/buckets").c_str(), 0600), 0);
    expectState("unreadable\\x20(buckets:\\x20Not\\x20a\\x20regular\\x20file)");
}

TEST_F(StatFaults, AFileThatMayNotBeReadMakesItsTableUnreadable)
{
    if (!QuaskTesting::OtherUser::exists()) {
        GTEST_SKIP() << "the system lets nobody become another user";
    }
    ownerless().writeTo(root, "feed");
    chmod(root.path().c_str(), 0755);
    chmod((feed + "/slots").c_str(), 0);
    QuaskTesting::OtherUser const user(program);
    Finished const finished = run(user.command(command({"-rn", "-o", "NAME,STATE"})));
    EXPECT_EQ(finished.out, "feed unreadable\\x20(slots:\\x20Permission\\x20denied)\n");
    EXPECT_EQ(finished.exitStatus, 0);
}

TEST_F(StatFaults, APageThatCannotBeReadMakesItsTableUnreadable)
{
    std::string const directory = root.makeDirectory("full");
    SmallFileSystem const fileSystem(directory, std::size_t{64} << 10);
    ownerless().writeTo(root, "full/feed");
    std::string const path = directory + "/feed/vandral.2";
    std::filesystem::resize_file(path, 0);
    std::filesystem::resize_file(path, 56);
    std::ofstream filler(directory + "/filler");
    while (filler.put('x').flush()) {
    }
    ownerless().writeTo(root, "other");
    expectFinished(stat({"-rn", "-o", "NAME,USED,STATE"}),
                   "full/feed 1 unreadable\\x20(a\\x20page\\x20of\\x20vandral.1\\x20or\\x20"
                   "vandral.2\\x20could\\x20not\\x20be\\x20read)\nother 1 ok\n",
                   "", 0);
}

// The walk of a table of 60000 slots stands still in its middle: by the clock of the program under
// test, it stops when it first looks how late it is.
class StatWalk : public StatFaults
{
protected:
    // What is on the terminal in the end, when the slot file is cut in half during the walk.
    Finished cutShort(std::vector<std::string> arguments) const
    {
        large().writeTo(root, "feed");
        Command command = this->command(std::move(arguments));
        command.environment["QUASK_TEST_STOP"] = "yes";
        PseudoTerminal terminal(command, 80, 24);
        while (QuaskTesting::statusField(terminal.pid(), "State") != "T") {
            if (QuaskTesting::hasEnded(terminal.pid())) {
                return terminal.finish();
            }
        }
        auto const size = std::filesystem::file_size(feed + "/slots");
        std::filesystem::resize_file(feed + "/slots", size / 2 / 4096 * 4096);
        kill(terminal.pid(), SIGCONT);
        return terminal.finish();
    }

    std::string const wasCutShort =
        "Quask table file " + feed + "/slots was cut short while it was being read\n";
};

TEST_F(StatWalk, IsEndedByASlotFileCutShortAfterTheFigures)
{
    Finished const finished = cutShort({"-v"});
    EXPECT_TRUE(finished.out.starts_with("NAME          feed\n")) << finished.out;
    EXPECT_TRUE(finished.out.ends_with("\nClients\n  none\n" + wasCutShort)) << finished.out;
    EXPECT_EQ(finished.exitStatus, 1);
}

TEST_F(StatWalk, IsEndedByASlotFileCutShortWithoutHalfAJsonText)
{
    Finished const finished = cutShort({"-v", "-J"});
    EXPECT_EQ(finished.out, wasCutShort);
    EXPECT_EQ(finished.exitStatus, 1);
}

// The program waits until somebody reads the figures, which are longer than a page, before it
// walks.
TEST_F(StatWalk, IsNotOfATableThatHasTakenThePlaceOfTheOther)
{
    std::string name = "feed";
    std::string shown = "feed";
    for (int i = 0; i < 6; ++i) {
        name.append("/").append(200, '\x01');
        shown.append("/");
        for (int j = 0; j < 200; ++j) {
            shown.append("\\x01");
        }
    }
    ownerless().writeTo(root, name);
    Pipe pipe;
    pipe.makeLarge();
    std::size_t const filled = pipe.fill().size();
    std::string page(4096, '\0');
    ASSERT_EQ(read(pipe.readEnd(), page.data(), page.size()), 4096);
    Command command = this->command({"-v"});
    command.outDescriptor = pipe.writeEnd();
    ChildProcess process(command);
    while (!pipe.isFull()) {
        ASSERT_FALSE(QuaskTesting::hasEnded(process.pid()));
    }
    ownerless().writeTo(root, name);
    std::string const out = pipe.readToEnd().substr(filled - page.size());
    EXPECT_TRUE(out.starts_with("NAME          " + shown + "\n")) << out;
    EXPECT_TRUE(out.ends_with("\nClients\n  none\n")) << out;
    expectFinished(process.finish(), "",
                   "quask-stat: " + shown + " cannot be walked: it has been replaced or removed\n",
                   1);
}

TEST_F(StatFaults, ATableReplacedBetweenTwoLooksHasNoRates)
{
    ownerless().writeTo(root, "feed");
    ChildProcess process(command({"-i", "0.01", "-rn", "-o", "USED,NET/S"}));
    EXPECT_EQ(process.readLine(), "1 0.0");
    TableImage::of("int", 4).buckets(1).slots(3).writeTo(root, "feed");
    std::string line;
    while (line != "0 -") {
        line = process.readLine();
        ASSERT_TRUE(line.empty() || line == "1 0.0" || line == "0 -") << line;
    }
    EXPECT_EQ(process.readLine(), "");
    EXPECT_EQ(process.readLine(), "0 0.0");
    process.kill(SIGTERM);
    EXPECT_EQ(process.finish().signal, SIGTERM);
}

TEST_F(StatFaults, NamesWithControlCharactersAreEscaped)
{
    TableImage image = ownerless();
    image.slotsHeader.valueType = "\x1b[2Jint";
    image.writeTo(root, "feed\x1b]0;\n\x9b\a");
    std::string const name = "feed\\x1b]0;\\x0a\\x9b\\x07";
    expectFinished(stat({"-n", "-o", "NAME,VALUE"}), name + " \\x1b[2Jint\n", "", 0);
    EXPECT_THAT(stat({"-v"}).out, HasSubstr("NAME          " + name + "\n"));
    ownerless().writeTo(root, "feed2");
    expectFinished(stat({"-v"}), "",
                   "More than one table was found. Try again using one of the following tables:\n"
                   "  - " +
                       name + "\n  - feed2\n",
                   1);
}

std::string const cannotWrite = "Error writing to standard output\n";
std::vector<std::vector<std::string>> const everyReport{
    {}, {"-J"}, {"-r"}, {"-v"}, {"-v", "-J"}, {"-m"}, {"-H"}, {"-i", "0.01"}, {"--check"}};

TEST_F(StatFaults, AFullDeviceIsAnErrorOfEveryReport)
{
    ownerless().writeTo(root, "feed");
    for (std::vector<std::string> const& arguments : everyReport) {
        expectFinished(redirected("> /dev/full", arguments), "", cannotWrite, 1);
    }
}

TEST_F(StatFaults, AClosedStandardOutputIsAnErrorOfEveryReport)
{
    ownerless().writeTo(root, "feed");
    for (std::vector<std::string> const& arguments : everyReport) {
        expectFinished(redirected(">&-", arguments), "", cannotWrite, 1);
    }
}

TEST_F(StatFaults, ACheckThatCannotBePrintedIsNoBetterForIt)
{
    TableImage image = ownerless();
    image.vandral1.orvik += 1;
    image.writeTo(root, "feed");
    expectFinished(redirected("> /dev/full", {"--check"}), "", cannotWrite, 2);
}

TEST_F(StatFaults, AReaderThatIsGoneEndsIntervalsQuietly)
{
    ownerless().writeTo(root, "feed");
    Pipe pipe;
    Command command = this->command({"-i", "0.01", "-rn", "-o", "NAME"});
    command.outDescriptor = pipe.writeEnd();
    ChildProcess process(command);
    EXPECT_NE(pipe.read(), "");
    pipe.closeReadEnd();
    Finished const finished = process.finish();
    EXPECT_EQ(finished.signal, SIGPIPE);
    EXPECT_EQ(finished.err, "");
}

}  // namespace
