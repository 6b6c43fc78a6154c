// quask-stat -i: on a terminal, and elsewhere.

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <sstream>

#include <sys/resource.h>

#include "stat/stat_fixture.h"
#include "support/table_writer.h"
#include "support/waiting.h"

namespace {

using QuaskTesting::ChildProcess;
using QuaskTesting::Finished;
using QuaskTesting::PseudoTerminal;
using QuaskTesting::TableWriter;

class Intervals : public QuaskTesting::StatTest
{};

TEST_F(Intervals, AreBlocksOfRatesWhereThereIsNoTerminal)
{
    ordinary().writeTo(root, "feed");
    std::string const block =
        "NAME USED USE% UPDATES/S NOTIFIED/S NET/S GROWN/S WRITER STATE\n"
        "feed   20  20%       0.0        0.0   0.0     0.0 none   ok\n";
    Finished const run = stat({"-i", "0.01", "-c", "3"});
    EXPECT_EQ(run.out, block + "\n" + block + "\n" + block);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(stat({"-i", "0.01", "-c", "1", "-rn", "-o", "NAME,NET/S"}).out, "feed 0.0\n");
}

TEST_F(Intervals, ShowWhatAWriterDoes)
{
    TableWriter writer(root.path() + "/feed", {});
    std::uint32_t const slot = writer.insert(0, "abcdefgh");
    ChildProcess program(command({"-i", "0.05", "-rn", "-o", "USED,UPDATES/S,NET/S,GROWN/S"}));
    EXPECT_EQ(program.readLine(), "1 0.0 0.0 0.0");
    EXPECT_EQ(program.readLine(), "");
    writer.update(slot, "abcdefgi");
    writer.insert(1, "abcdefgh");
    writer.grow(100);
    // All three happen in one interval or in more; how long these really are decides the rates.
    bool hasUpdate = false;
    bool hasInsertion = false;
    bool hasGrowth = false;
    while (!hasUpdate || !hasInsertion || !hasGrowth) {
        std::istringstream cells(program.readLine());
        double used = 0;
        double updates = 0;
        double net = 0;
        double growths = 0;
        ASSERT_TRUE(cells >> used >> updates >> net >> growths);
        hasUpdate |= updates > 0;
        hasInsertion |= net > 0 && used == 2;
        hasGrowth |= growths > 0;
        ASSERT_TRUE(updates >= 0 && net >= 0 && growths >= 0);
        program.readLine();  // between the blocks
    }
    program.kill(SIGTERM);
    EXPECT_EQ(program.finish().signal, SIGTERM);
}

TEST_F(Intervals, GoOnWhileThereAreNoTables)
{
    Finished const run = stat({"-i", "0.01", "-c", "2", "-J"});
    // Versions of libsmartcols differ in the spaces of an empty list.
    std::string text;
    std::ranges::copy_if(run.out, std::back_inserter(text), [](char c) { return c > ' '; });
    std::string const block = R"({"tables":[],"unread_processes":0})";
    EXPECT_EQ(text, block + block);
    EXPECT_EQ(run.exitStatus, 0);
}

// The last line and what ends it.
std::string const enter = "\033[?1049h\033[?25l";
std::string const leave = "\033[?25h\033[?1049l";
std::string const end = "\033[K\033[J";

// Ends a program that takes each key at once, as it should, and one that takes whole lines. Typed
// together with a Ctrl-C that comes before it, it ends one that is not interrupted.
std::string const quit = "q\n";

class Display : public QuaskTesting::StatTest
{
protected:
    Display() { ordinary().writeTo(root, "feed"); }

    static bool isSame(termios const& left, termios const& right)
    {
        return left.c_iflag == right.c_iflag && left.c_oflag == right.c_oflag &&
               left.c_cflag == right.c_cflag && left.c_lflag == right.c_lflag &&
               std::ranges::equal(left.c_cc, right.c_cc);
    }

    // The longest interval there is: only what the test does makes it draw again.
    PseudoTerminal start(unsigned short width) const
    {
        return PseudoTerminal(command({"-i", "86400"}), width, 20);
    }

    std::string const first =
        "\033[HNAME USED USE% UPDATES/S NOTIFIED/S NET/S GROWN/S WRITER STATE\033[K\r\n"
        "feed   20  20%         -          -     -       - none   ok" +
        end;
};

TEST_F(Display, IsDrawnAtOnceAndLeavesTheTerminalAsItWas)
{
    PseudoTerminal terminal = start(80);
    EXPECT_EQ(terminal.readUntil(end), enter + first);
    EXPECT_EQ(terminal.settings().c_lflag & static_cast<tcflag_t>(ICANON | ECHO), 0u);
    EXPECT_NE(terminal.settings().c_lflag & static_cast<tcflag_t>(ISIG), 0u);
    EXPECT_NE(terminal.settings().c_lflag & static_cast<tcflag_t>(NOFLSH), 0u)
        << "Ctrl-C throws away what leaves the display, if that is on its way already";
    terminal.type("x" + quit);
    Finished const run = terminal.finish();
    EXPECT_EQ(run.out, leave);
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(Display, HasTheSettingsBackAtTheEnd)
{
    // A shell that starts the program when it is told to, and outlives it, keeps the terminal open.
    QuaskTesting::Command command = this->command({});
    command.words = {"/bin/sh", "-c",
                     "read line; " QUASK_STAT_UNDER_TEST
                     " -i 86400; echo status $?; read line; exit 7"};
    PseudoTerminal terminal(command, 80, 20);
    termios const before = terminal.settings();
    terminal.type("\n");
    terminal.readUntil(end);
    EXPECT_FALSE(isSame(terminal.settings(), before));
    terminal.type(quit);
    EXPECT_EQ(terminal.readUntil("status 0"), leave + "status 0");
    EXPECT_TRUE(isSame(terminal.settings(), before));
    terminal.type("\n");
    EXPECT_EQ(terminal.finish().exitStatus, 7);
}

TEST_F(Display, IsDrawnAgainWhenTheWindowIsResized)
{
    PseudoTerminal terminal = start(80);
    terminal.readUntil(end);
    terminal.resize(80, 1);
    EXPECT_EQ(terminal.readUntil(end),
              "\033[HNAME USED USE% UPDATES/S NOTIFIED/S NET/S GROWN/S WRITER STATE" + end);
    terminal.resize(80, 20);
    EXPECT_EQ(terminal.readUntil(end), first);
    terminal.type(quit);
    EXPECT_EQ(terminal.finish().exitStatus, 0);
}

TEST_F(Display, IsLeftByCtrlCWithTheSignal)
{
    PseudoTerminal terminal = start(80);
    terminal.readUntil(end);
    terminal.type("\003" + quit);
    Finished const run = terminal.finish();
    EXPECT_EQ(run.out, leave);
    EXPECT_EQ(run.signal, SIGINT);
}

TEST_F(Display, IsLeftByTheKeyThatAsksForACoreDump)
{
    rlimit const none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    PseudoTerminal terminal = start(80);
    terminal.readUntil(end);
    terminal.type("\034" + quit);
    Finished const run = terminal.finish();
    EXPECT_EQ(run.out, leave);
    EXPECT_EQ(run.signal, SIGQUIT);
}

TEST_F(Display, IsLeftWhenTheProgramIsToldToEnd)
{
    PseudoTerminal terminal = start(80);
    terminal.readUntil(end);
    kill(terminal.pid(), SIGTERM);
    Finished const run = terminal.finish();
    EXPECT_EQ(run.out, leave);
    EXPECT_EQ(run.signal, SIGTERM);
}

TEST_F(Display, ReturnsAfterTheProgramWasStopped)
{
    PseudoTerminal terminal = start(80);
    terminal.readUntil(end);
    kill(terminal.pid(), SIGTSTP);
    while (QuaskTesting::statusField(terminal.pid(), "State") != "T") {
        ASSERT_FALSE(QuaskTesting::hasEnded(terminal.pid()));
    }
    EXPECT_EQ(terminal.readNow(), leave);
    kill(terminal.pid(), SIGCONT);
    EXPECT_EQ(terminal.readUntil(end), enter + first);
    terminal.type(quit);
    EXPECT_EQ(terminal.finish().exitStatus, 0);
}

TEST_F(Display, EndsAfterItsCountAndLeavesTheLastRows)
{
    PseudoTerminal terminal(command({"-i", "0.01", "-c", "1"}), 80, 20);
    EXPECT_EQ(terminal.readUntil(leave).find(enter + first), 0u);
    Finished const run = terminal.finish();
    EXPECT_EQ(run.out,
              "NAME USED USE% UPDATES/S NOTIFIED/S NET/S GROWN/S WRITER STATE\n"
              "feed   20  20%       0.0        0.0   0.0     0.0 none   ok\n");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(Display, ShowsNamesOfStrangersEscaped)
{
    ordinary().writeTo(root, "a\x1b[31m\nb");
    PseudoTerminal terminal = start(120);
    EXPECT_NE(terminal.readUntil(end).find("\r\na\\x1b[31m\\x0ab   20"), std::string::npos);
    terminal.type(quit);
    EXPECT_EQ(terminal.finish().exitStatus, 0);
}

TEST_F(Display, EndsWhenTheTablesCannotBeSearchedAnyMore)
{
    PseudoTerminal terminal(command({"-i", "0.01"}), 80, 20);
    terminal.readUntil(end);
    std::filesystem::rename(root.path(), root.path() + ".away");
    terminal.readUntil(leave);
    Finished const run = terminal.finish();
    EXPECT_EQ(run.out, "Error searching for tables\n");
    EXPECT_EQ(run.exitStatus, 1);
    std::filesystem::rename(root.path() + ".away", root.path());
}

}  // namespace
