// Where the output cannot go, and what interrupts it.

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "faults/blocked_scan.h"
#include "faults/faults_fixture.h"
#include "support/own_namespaces.h"
#include "support/patience.h"
#include "support/pipe.h"

namespace {

using QuaskTesting::BlockedScan;
using QuaskTesting::bytesOf;
using QuaskTesting::ChildProcess;
using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::Patience;
using QuaskTesting::Pipe;
using QuaskTesting::succeedsInTime;
using QuaskTesting::TableImage;

std::string contentsOf(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class OutputFault : public QuaskTesting::FaultsTest
{
protected:
    OutputFault() { makeSmall("feed"); }

    // Runs with the shell's redirections.
    Finished redirected(std::string const& redirections, std::vector<std::string> arguments) const
    {
        Command command = this->command(std::move(arguments));
        command.words.insert(command.words.begin(),
                             {"/bin/sh", "-c", "exec \"$@\" " + redirections, "sh"});
        return QuaskTesting::run(command);
    }
};

std::string const cannotWrite = "Error writing to standard output\n";

TEST_F(OutputFault, AFullDeviceIsAnErrorOfEveryReport)
{
    for (std::vector<std::string> const& arguments : std::vector<std::vector<std::string>>{
             {"feed"}, {"-x", "feed"}, {"-w", "feed"}, {"--help"}}) {
        expectFinished(redirected("> /dev/full", arguments), "", cannotWrite, 1);
    }
}

TEST_F(OutputFault, AFullDeviceIsAnErrorOfALongScan)
{
    large().writeTo(root, "large");
    expectFinished(redirected("> /dev/full", {"large"}), "", cannotWrite, 1);
}

TEST_F(OutputFault, AClosedStandardOutputIsAnError)
{
    expectFinished(redirected(">&-", {"feed"}), "", cannotWrite, 1);
    expectFinished(redirected(">&-", {"-x", "feed"}), "", cannotWrite, 1);
}

TEST_F(OutputFault, AClosedStandardErrorChangesNothingElse)
{
    expectFinished(redirected("2>&-", {"feed"}), smallScan, "", 0);
    expectFinished(redirected("2>&-", {"nowhere"}), "", "", 1);
    expectFinished(redirected("2>&- > /dev/full", {"feed"}), "", "", 1);
}

// With the first free descriptor, the file would take the place of standard error.
TEST_F(OutputFault, AClosedStandardErrorIsNotTheReportFile)
{
    if (!QuaskTesting::inOwnNamespaces()) {
        GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
    }
    std::string const path = root.path() + "/report";
    Command command = this->command({"-f", path});
    command.environment["QUASK_TEST_ROOT"] = "/nonexistent";
    expectFinished(QuaskTesting::run(command), "",
                   "Error searching for tables\nError adding clientless Quasks\n", 1);
    for (char const* const closed : {"2>&-", "<&- 2>&-", ">&- 2>&-", "<&- >&- 2>&-"}) {
        Command closing = command;
        closing.words.insert(closing.words.begin(),
                             {"/bin/sh", "-c", std::string("exec \"$@\" ") + closed, "sh"});
        expectFinished(QuaskTesting::run(closing), "", "", 1);
        EXPECT_EQ(contentsOf(path), "") << closed;
    }
}

TEST_F(OutputFault, AClosedStandardInputIsNotMissed)
{
    expectFinished(redirected("<&-", {"feed"}), smallScan, "", 0);
}

TEST_F(OutputFault, WithAllDescriptorsClosedNothingIsWrittenAnywhere)
{
    expectFinished(redirected("<&- >&- 2>&-", {"feed"}), "", "", 1);
    EXPECT_EQ(contentsOf(root.path() + "/feed/slots"), small().slotsFile());
}

// The report fails, there is no /proc either; but the warning about root comes first.
TEST_F(OutputFault, WithoutDeviceFilesAClosedStandardOutputIsNotTheReportFile)
{
    std::filesystem::copy_file(QUASK_UNDER_TEST, root.path() + "/quask");
    std::filesystem::permissions(root.path(), std::filesystem::perms::all);
    Command command;
    command.words = {"/bin/sh", "-c",        "exec chroot --userspec=65534:65534 \"$@\" >&-",
                     "sh",      root.path(), "/quask",
                     "-f",      "/report"};
    command.environment = {{"QUASK_TEST_ROOT", "/"}};
    command.unset = {"J5_CHROOT", "DOVAN_DEBUG"};
    Finished const finished = QuaskTesting::run(command);
    if (!std::filesystem::exists(root.path() + "/report")) {
        GTEST_SKIP() << "the tool does not run in a root directory of its own here: "
                     << finished.err;
    }
    EXPECT_EQ(finished.signal, SIGABRT);
    EXPECT_EQ(contentsOf(root.path() + "/report"), "");
}

TEST_F(OutputFault, AFileThatMayNotGrowIsAnError)
{
    large().writeTo(root, "large");
    std::string const whole = quask({"large"}).out;
    Command command = this->command({"large"});
    std::string const path = root.writeFile("out", "");
    command.outDescriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    command.limits[RLIMIT_FSIZE] = 100000;
    expectFinished(QuaskTesting::run(command), "", cannotWrite, 1);
    close(command.outDescriptor);
    EXPECT_TRUE(contentsOf(path) == whole.substr(0, 100000));
}

TEST_F(OutputFault, AReaderThatIsGoneEndsTheRunQuietly)
{
    large().writeTo(root, "large");
    BlockedScan scan(command({"large"}));
    Finished const finished = scan.abandon();
    EXPECT_EQ(finished.signal, SIGPIPE);
    EXPECT_EQ(finished.err, "");
}

TEST_F(OutputFault, APipeThatDoesNotBlockIsWaitedFor)
{
    large().writeTo(root, "large");
    std::string const whole = quask({"large"}).out;
    BlockedScan scan(command({"large"}), O_NONBLOCK);
    Finished const finished = scan.finish();
    EXPECT_TRUE(finished.out == whole);
    EXPECT_EQ(finished.err, "");
    EXPECT_EQ(finished.exitStatus, 0);
}

TEST_F(OutputFault, APipeThatDoesNotBlockIsWaitedForWithoutDescriptors)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
#endif
    large().writeTo(root, "large");
    std::string const whole = quask({"large"}).out;
    BlockedScan scan(command({"large"}), O_NONBLOCK);
    rlimit const none{0, 0};
    ASSERT_EQ(prlimit(scan.process().pid(), RLIMIT_NOFILE, &none, nullptr), 0);
    Finished const finished = scan.finish();
    EXPECT_TRUE(finished.out == whole);
    EXPECT_EQ(finished.err, "");
    EXPECT_EQ(finished.exitStatus, 0);
}

TEST_F(OutputFault, AStandardErrorThatDoesNotBlockIsWaitedFor)
{
    for (int i = 0; i < 1000; ++i) {
        root.writeFile("one of many tables/" + std::to_string(i) + "/slots", "");
    }
    Pipe pipe;
    pipe.makeSmall();
    pipe.unblockWriteEnd();
    Command command = this->command({"many"});
    command.errDescriptor = pipe.writeEnd();
    ChildProcess process(command);
    while (!pipe.isFull()) {
    }
    std::string const list = pipe.readToEnd();
    EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), 1001);
    expectFinished(process.finish(), "", "", 1);
}

TEST_F(OutputFault, AReaderOfStandardErrorThatIsGoneChangesNothingElse)
{
    Pipe pipe;
    pipe.closeReadEnd();
    auto const withoutReader = [&](std::vector<std::string> arguments) {
        Command command = this->command(std::move(arguments));
        command.errDescriptor = pipe.writeEnd();
        command.environment["DOVAN_DEBUG"] = "9";
        return QuaskTesting::run(command);
    };
    expectFinished(withoutReader({"feed"}), smallScan, "", 0);
    expectFinished(withoutReader({"--unknown", "feed"}), smallScan, "", 0);
    expectFinished(withoutReader({"nowhere"}), "", "", 1);
    TableImage broken = small();
    broken.bucketLinks[0].value = 5000;
    broken.writeTo(root, "broken");
    EXPECT_EQ(withoutReader({"broken"}).signal, SIGABRT);
}

TEST_F(OutputFault, AReportFileThatCannotBeOpenedIsAnError)
{
    std::string const path = root.path() + "/missing/out";
    expectFinished(quask({"-f", path}), "",
                   "Error opening " + path + "\nFailed to initialize QuaskClientScanner.\n", 1);
}

// A table whose scan shows three lines at once and then has millions of empty buckets to walk,
// which it does not show.
class Interrupted : public OutputFault
{
protected:
    Interrupted()
    {
        QuaskTesting::TableImage image = QuaskTesting::TableImage::of("int", 4).buckets(8000000);
        for (std::uint32_t i = 0; i < 3; ++i) {
            image.chain(i, {{i, bytesOf(i)}});
        }
        image.writeTo(root, "long");
    }

    // The signal comes after a random while, which may be longer each time, until it has met the
    // scan after the lines. Whenever it comes, there may be no other text than whole lines from the
    // first on.
    void expectFinishedLinesAtSignal(int number)
    {
        std::string const whole = quask({"long"}).out;
        std::string const lines = whole.substr(0, whole.find("Lookaside"));
        std::minstd_rand random(1);
        bool met = false;
        for (unsigned attempts = 0; !met && !HasFailure(); ++attempts) {
            ChildProcess process(command({"long"}));
            usleep(static_cast<useconds_t>(random() % (60000 + 1000 * attempts)));
            process.kill(number);
            Finished const finished = process.finish();
            EXPECT_EQ(finished.err, "");
            EXPECT_TRUE(whole.starts_with(finished.out)) << finished.out;
            EXPECT_TRUE(finished.out.empty() || finished.out.back() == '\n') << finished.out;
            met = finished.signal == number && finished.out == lines;
        }
    }
};

TEST_F(Interrupted, BySigtermAScanLeavesTheFinishedLines)
{
    expectFinishedLinesAtSignal(SIGTERM);
}

TEST_F(Interrupted, BySigintAScanLeavesTheFinishedLines)
{
    expectFinishedLinesAtSignal(SIGINT);
}

TEST_F(Interrupted, BySigtermInAWriteAScanTearsNoLine)
{
    large().writeTo(root, "large");
    std::string const whole = quask({"-p", "large"}).out;
    EXPECT_TRUE(succeedsInTime([&](Patience& patience) {
        BlockedScan scan(command({"-p", "large"}));
        patience.begin();
        scan.process().kill(SIGTERM);
        Finished const finished = scan.finish();
        EXPECT_EQ(finished.signal, SIGTERM);
        EXPECT_EQ(finished.err, "");
        return whole.starts_with(finished.out) && finished.out.ends_with(" --> none\n");
    }));
}

TEST_F(Interrupted, BySigtermInALineOfALargeValueAScanWritesTheLine)
{
    constexpr std::uint32_t size = 1 << 20;
    std::string const value(size, 'a');
    TableImage image = TableImage::of("char[1048576]", size).buckets(3);
    for (std::uint32_t i = 0; i < 3; ++i) {
        image.chain(i, {{i, value}});
    }
    image.writeTo(root, "large");
    EXPECT_TRUE(succeedsInTime([&](Patience& patience) {
        BlockedScan scan(command({"-p", "large"}));
        patience.begin();
        scan.process().kill(SIGTERM);
        Finished const finished = scan.finish();
        EXPECT_EQ(finished.signal, SIGTERM);
        return finished.out == "bucket[0] 0-->\"" + value + "\" ffffffff --> none\n";
    }));
}

TEST_F(Interrupted, BySigtermAScanWhoseReaderTakesNothingEnds)
{
    large().writeTo(root, "large");
    BlockedScan scan(command({"large"}));
    scan.process().kill(SIGTERM);
    EXPECT_EQ(scan.finishUnread().signal, SIGTERM);
}

TEST_F(Interrupted, BySigtermInTheWalkAScanWhoseReaderTakesNothingEnds)
{
    Pipe pipe;
    pipe.makeLarge();
    std::string const before = pipe.fill();
    Command command = this->command({"long"});
    command.outDescriptor = pipe.writeEnd();
    ChildProcess process(command);
    std::string const maps = "/proc/" + std::to_string(process.pid()) + "/maps";
    while (contentsOf(maps).find(root.path() + "/long/slots") == std::string::npos) {
    }
    process.kill(SIGTERM);
    EXPECT_EQ(process.finish().signal, SIGTERM);
    EXPECT_TRUE(pipe.readToEnd() == before);
}

}  // namespace
