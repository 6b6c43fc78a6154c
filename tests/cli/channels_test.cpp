// The channels of the diagnostics.

#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "support/private_root.h"
#include "support/quask_program.h"
#include "support/table_files.h"

namespace {

using Names = std::set<std::string>;

// The names of the channels on which a run on a table "feed" writes lines that hold `text`.
Names channelsOf(std::vector<std::string> arguments, std::string const& text)
{
    QuaskTesting::PrivateRoot const root;
    QuaskTesting::TableImage::of("int", 4).buckets(1).slots(1).writeTo(root, "feed");
    QuaskTesting::Command command = QuaskTesting::quask(root, std::move(arguments));
    command.environment["DOVAN_DEBUG"] = "9";
    std::istringstream lines(QuaskTesting::run(command).err);
    Names names;
    for (std::string line; std::getline(lines, line);) {
        if (line.find(text) != line.npos) {
            names.insert(line.substr(0, line.find(' ')));
        }
    }
    return names;
}

TEST(Channels, AreThoseOfTheFinderTheScannersAndEachTable)
{
    EXPECT_EQ(channelsOf({"-w", "feed"}, ""), (Names{"Quask", "Quask-feed", "QuaskScanner"}));
    EXPECT_EQ(channelsOf({"-w", "feed"}, "TableFinder::"), Names{"Quask"});
    EXPECT_EQ(channelsOf({"-w", "feed"}, "Extracting mmap info"), Names{"QuaskScanner"});
}

TEST(Channels, OfATablesFilesIsTheTables)
{
    for (char const* const job : {"-p", "-x", "-w"}) {
        for (char const* const file : {"/feed/buckets", "/feed/slots"}) {
            EXPECT_EQ(channelsOf({job, "feed"}, file), Names{"Quask-feed"}) << job << file;
        }
    }
    for (char const* const file : {"/feed/vandral.1", "/feed/vandral.2"}) {
        EXPECT_EQ(channelsOf({"-w", "feed"}, file), Names{"Quask-feed"}) << file;
        EXPECT_EQ(channelsOf({"-x", "feed"}, file), Names{"QuaskScanner"}) << file;
    }
}

}  // namespace
