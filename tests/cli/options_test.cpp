// The command line: options, EXPR, and which job they start.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/child_process.h"
#include "support/private_root.h"
#include "support/quask_program.h"
#include "support/table_files.h"

namespace {

using QuaskTesting::bytesOf;
using QuaskTesting::Finished;
using QuaskTesting::TableImage;

constexpr char const* help =
    "Description:\n"
    "   quask is a simple utility that passively walks a Quask table,\n"
    "   printing the chain of elements for each bucket. It can also print\n"
    "   information about table headers and about clients of Quask tables.\n"
    "\n"
    "\n"
    "Usage:\n"
    "   quask [OPTIONS]\n"
    "\n"
    "   where OPTIONS are optional flags described below\n"
    "   --who-all, -a Prints per-collection info about processes that are\n"
    "                 attached to each collection\n"
    "   -f <FILE>     Direct output towards a file\n"
    "\n"
    "   quask [OPTIONS] [EXPR]\n"
    "\n"
    "   where OPTIONS are optional flags described below, and EXPR is a\n"
    "   quask collection name, or the full path to a specific collection.\n"
    "\n"
    "   -e            Enable printing of empty buckets\n"
    "   -f <FILE>     Direct output towards a file\n"
    "   -p            Pretty prints of values\n"
    "   -t            VOSK prints of values\n"
    "   -x            Prints headers for the buckets, slots, and vandral tables\n"
    "   --who, -w     Prints info about processes that are attached to the\n"
    "                 collection\n"
    "\n"
    "Help:\n"
    "   --help, -h    Display this helper and exit\n"
    "\n"
    "\n";

class CommandLine : public testing::Test
{
protected:
    CommandLine()
    {
        TableImage::of("int", 4).buckets(1).chain(0, {{0, bytesOf(7)}}).writeTo(root, "feed/eq");
    }

    Finished quask(std::vector<std::string> arguments) const
    {
        return QuaskTesting::run(QuaskTesting::quask(root, std::move(arguments)));
    }

    static std::string scanOf(std::string const& value)
    {
        return "bucket[0] 0-->" + value +
               " ffffffff --> none\nLookaside hits: 0\nChain restarts: 0\n";
    }

    QuaskTesting::PrivateRoot root;
    std::string const plain = scanOf("07000000");
    std::string const pretty = scanOf("7");
};

TEST_F(CommandLine, HelpIsPrintedAndEndsTheRun)
{
    for (auto const& arguments :
         std::vector<std::vector<std::string>>{{"-h"},
                                               {"--help"},
                                               {"-a", "-h"},
                                               {"-h", "-a"},
                                               {"nowhere", "-xh"},
                                               {"--hel"},
                                               {"-h", "-f", "/nonexistent/x"},
                                               {"-f", "/nonexistent/x", "-h"}}) {
        Finished const run = quask(arguments);
        EXPECT_EQ(run.out, help) << arguments[0];
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.exitStatus, 0);
    }
}

TEST_F(CommandLine, HelpEndsTheRunBeforeALaterOptionIsLookedAt)
{
    EXPECT_EQ(quask({"-h", "-z"}).err, "");
    EXPECT_NE(quask({"-z", "-h"}).err, "");
}

TEST_F(CommandLine, OptionsMayPrecedeOrFollowTheExpression)
{
    EXPECT_EQ(quask({"-p", "eq"}).out, pretty);
    EXPECT_EQ(quask({"eq", "-p"}).out, pretty);
    EXPECT_EQ(quask({"-p", "--", "eq"}).out, pretty);
}

TEST_F(CommandLine, ArgumentsAfterTheExpressionAreIgnored)
{
    Finished const run = quask({"eq", "nowhere", "more"});
    EXPECT_EQ(run.out, plain);
    EXPECT_EQ(run.err, "");
}

TEST_F(CommandLine, WithoutAnExpressionTheOnlyTableIsTaken)
{
    EXPECT_EQ(quask({}).out, plain);
}

TEST_F(CommandLine, TheLastStyleWins)
{
    EXPECT_EQ(quask({"-t", "-p", "eq"}).out, pretty);
    EXPECT_EQ(quask({"-p", "-t", "eq"}).out, pretty);
}

TEST_F(CommandLine, AnUnknownOptionIsReportedAndIgnored)
{
    Finished const run = quask({"-z", "eq"});
    EXPECT_EQ(run.out, plain);
    EXPECT_EQ(run.err, std::string(QUASK_UNDER_TEST) + ": invalid option -- 'z'\n");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(CommandLine, AnUnknownLongOptionIsReportedAndIgnored)
{
    Finished const run = quask({"eq", "--verbose"});
    EXPECT_EQ(run.out, plain);
    EXPECT_EQ(run.err, std::string(QUASK_UNDER_TEST) + ": unrecognized option '--verbose'\n");
}

TEST_F(CommandLine, NoMatchIsAFailure)
{
    Finished const run = quask({"nowhere"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "No table was found.\n");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(CommandLine, SeveralMatchesAreListed)
{
    TableImage::of("int", 4).buckets(1).writeTo(root, "feed/fx");
    Finished const run = quask({"feed", "-x"});
    std::string const title =
        "More than one table was found. Try again using one of the following tables:\n";
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err == title + "  - feed/eq\n  - feed/fx\n" ||
                run.err == title + "  - feed/fx\n  - feed/eq\n")
        << run.err;
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(CommandLine, SeveralMatchesAreListedInTheOrderOfTheirDirectory)
{
    for (char const* const name : {"b", "d", "a", "e", "c"}) {
        TableImage::of("int", 4).buckets(1).writeTo(root, std::string("list/") + name);
    }
    std::string list;
    for (auto const& entry : std::filesystem::directory_iterator(root.path() + "/list")) {
        list += "  - list/" + entry.path().filename().string() + "\n";
    }
    EXPECT_EQ(
        quask({"list"}).err,
        "More than one table was found. Try again using one of the following tables:\n" + list);
}

TEST_F(CommandLine, ARootDirectoryThatCannotBeOpenedIsAFailure)
{
    QuaskTesting::Command command = QuaskTesting::quask(root, {"eq"});
    command.environment["QUASK_TEST_ROOT"] = root.path() + "/nowhere";
    Finished const run = QuaskTesting::run(command);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "Error searching for tables\n");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(CommandLine, HeadersArePrintedWhateverTheStyle)
{
    std::string const headers = quask({"-x", "eq"}).out;
    EXPECT_EQ(
        headers.rfind("Quask table \"" + root.path() + "/feed/eq\"\n\nBuckets header: (24", 0), 0u)
        << headers;
    EXPECT_EQ(quask({"-x", "-t", "eq"}).out, headers);
    EXPECT_EQ(quask({"-e", "-x", "-p", "eq"}).out, headers);
}

}  // namespace
