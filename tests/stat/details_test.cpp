// quask-stat -v: one table in depth.

#include <ctime>
#include <filesystem>
#include <iomanip>
#include <regex>
#include <sstream>

#include <pwd.h>
#include <unistd.h>

#include "stat/details_fixture.h"

namespace {

using QuaskTesting::ChildProcess;
using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using QuaskTesting::TableImage;

class Details : public QuaskTesting::DetailsTest
{
protected:
    // The part of the text from this line on.
    static std::string from(std::string const& line, std::string const& text)
    {
        std::size_t const start = text.find("\n" + line + "\n");
        return start == text.npos ? "no " + line : text.substr(start + 1);
    }
};

TEST_F(Details, HaveTheFiguresOfTheRowAndTheHeaders)
{
    std::string const out = stat({"-v"}).out;
    EXPECT_EQ(out.substr(0, out.find("\nWalk\n")),
              "NAME          feed\n"
              "USED          24\n"
              "MAPPED        24\n"
              "MAX           100\n"
              "USE%          24\n"
              "BUCKETS       8\n"
              "LOAD          3.00\n"
              "WRITER        none\n"
              "READERS       0\n"
              "SHADOWS       0\n"
              "KEYSHADOWS    0\n"
              "STALE         0\n"
              "GROWN         0\n"
              "UPDATES       0\n"
              "NOTIFICATIONS 0\n"
              "VALUE         int\n"
              "SIZE          13152\n"
              "STATE         ok\n"
              "\n"
              "Headers\n"
              "  buckets    stamp 462994 (pid 4242, instance 7), owner " +
                  std::to_string(getpid()) +
                  "\n"
                  "  slots      stamp 462994 (pid 4242, instance 7)\n"
                  "             values of 4 bytes in slots of 24, next free slot none\n"
                  "             class Quask::Table\n"
                  "  vandral.1  stamp 462994 (pid 4242, instance 7)\n"
                  "             primary is current; readers 0, notifications 0, minimum sequence "
                  "0\n"
                  "  vandral.2  stamp 462994 (pid 4242, instance 7)\n"
                  "             primary is current; readers 0, notifications 0, minimum sequence "
                  "0\n"
                  "\n"
                  "Clients\n"
                  "  none\n");
}

TEST_F(Details, ShowWhatAWalkFinds)
{
    Finished const run = stat({"-v"});
    EXPECT_EQ(
        from("Walk", run.out),
        "Walk\n"
        "  elements        24 found, 24 counted before, 24 after;\n"
        "                  as many as the header counts\n"
        "  load            3.00 elements per bucket\n"
        "  empty buckets   4 of 8, 0 with an ideal hash\n"
        "  chain length    mean 3.00, standard deviation 6.46, 1.73 with an ideal hash\n"
        "  longest chains  20 (bucket[3]) 2 (bucket[6]) 1 (bucket[0]) 1 (bucket[5])\n"
        "  restarts        0\n"
        "  lookaside hits  0\n"
        "\n"
        "Length of chains, buckets\n"
        "    0 4 " +
            std::string(72, '#') +
            "\n"
            "    1 2 " +
            std::string(36, '#') +
            "\n"
            "    2 1 " +
            std::string(18, '#') +
            "\n"
            "    3 0\n    4 0\n    5 0\n    6 0\n    7 0\n    8 0\n    9 0\n   10 0\n   11 0\n"
            "   12 0\n   13 0\n   14 0\n   15 0\n"
            "16-31 1 " +
            std::string(18, '#') + "\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(Details, DrawAsWideAsTheTerminal)
{
    for (unsigned short const width : std::initializer_list<unsigned short>{40, 80, 200}) {
        std::string const out = onTerminal({"-v"}, width);
        EXPECT_NE(out.find("    0 4 " + std::string(width - 8u, '#') + "\n"), out.npos) << out;
    }
}

TEST_F(Details, ListTheClients)
{
    MappingClient const writer = clientOf("feed", writing);
    MappingClient const old = clientOf("feed", reading);
    TableImage::load(root.path() + "/feed").writeTo(root, "feed");
    MappingClient const reader = clientOf("feed", reading);
    std::string const out = stat({"-v"}).out;
    std::string const clients = from("Clients", out).substr(0, from("Clients", out).find("\n\n"));
    std::string const since = "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d";
    auto const line = [&](MappingClient const& client, std::string const& role) {
        return " +" + std::to_string(client.pid()) + " +\\w+ +" + role + " +" + since +
               " mapping_client";
    };
    EXPECT_TRUE(std::regex_match(
        clients, std::regex("Clients\n  PID +USER +ROLE +STALE SINCE +COMMAND\n" +
                            line(writer, "writer +yes") + "\n" + line(old, "reader +yes") + "\n" +
                            line(reader, "reader +no"))))
        << clients;
}

// In a time zone that is 5 hours and 45 minutes ahead.
TEST_F(Details, SayWhoseAClientIsAndWhenItStartedInLocalTime)
{
    // The kernel gives the machine's start in whole seconds and rounds it again each time.
    constexpr std::time_t rounding = 2;
    std::time_t const before = std::time(nullptr);
    MappingClient const reader = clientOf("feed", reading);
    std::time_t const after = std::time(nullptr);
    Command command = this->command({"-v"});
    command.environment.insert_or_assign("TZ", "NPT-5:45");
    std::string const clients = from("Clients", QuaskTesting::run(command).out);
    std::smatch found;
    ASSERT_TRUE(std::regex_search(
        clients, found,
        std::regex(std::to_string(reader.pid()) + " +(\\w+) +reader +no +(.{19}) mapping_client")))
        << clients;
    EXPECT_EQ(found[1], getpwuid(geteuid())->pw_name);
    std::tm since{};
    std::istringstream(found[2]) >> std::get_time(&since, "%Y-%m-%d %H:%M:%S");
    std::time_t const started = timegm(&since) - (5 * 60 + 45) * 60;
    EXPECT_GE(started, before - rounding);
    EXPECT_LE(started, after + rounding);
}

TEST_F(Details, SayWhatItMeansThatTheHeaderCountsOtherwise)
{
    TableImage image = TableImage::load(root.path() + "/feed");
    image.slotsHeader.occupiedSlots = 23;
    image.writeTo(root, "feed");
    EXPECT_NE(stat({"-v"}).out.find(
                  "24 found, 23 counted before, 23 after;\n                  a writer has died on "
                  "the way, and the next one will count again\n"),
              std::string::npos);
    MappingClient const writer = clientOf("feed", writing);
    EXPECT_NE(stat({"-v"}).out.find("a difference is normal while a writer inserts and removes\n"),
              std::string::npos);
}

TEST_F(Details, OfACorruptTableEndWithTheReason)
{
    TableImage image = TableImage::load(root.path() + "/feed");
    image.bucketLinks[3].value = 77;
    image.writeTo(root, "feed");
    Finished const run = stat({"-v"});
    EXPECT_TRUE(run.out.ends_with("\nClients\n  none\n")) << run.out;
    EXPECT_NE(run.err.find("out-of-range index: 77 max:23"), run.err.npos) << run.err;
    EXPECT_TRUE(run.err.starts_with("quask-stat: feed cannot be walked: ")) << run.err;
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(Details, OfATableThatCannotBeReadSayWhyOnce)
{
    TableImage::load(root.path() + "/feed")
        .without(QuaskTesting::TableFile::slots)
        .writeTo(root, "feed\x1b[31m");
    Finished const run = stat({"-v", "feed\x1b"});
    EXPECT_TRUE(run.out.ends_with("\nClients\n  none\n")) << run.out;
    EXPECT_EQ(run.err,
              "quask-stat: feed\\x1b[31m cannot be walked: slots: No such file or directory\n");
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(Details, OfARemovedTableHaveNoWalk)
{
    MappingClient const old = clientOf("feed", reading);
    std::filesystem::remove_all(root.path() + "/feed");
    Finished const run = stat({"-v"});
    EXPECT_TRUE(run.out.ends_with(" mapping_client\n")) << run.out;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(Details, AreOfOneTable)
{
    ordinary().writeTo(root, "feed2");
    Finished const run = stat({"-v"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "More than one table was found. Try again using one of the following tables:\n"
              "  - feed\n  - feed2\n");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(stat({"-v", "nowhere"}).err, "No table was found.\n");
}

TEST_F(Details, AWalkBesideAWriterAtFullSpeedComesToAnEnd)
{
    Command command;
    command.words = {LIVE_WRITER, root.path() + "/hot", "8", "4096", "3000", "500"};
    ChildProcess writer(command);
    ASSERT_NE(writer.readLine(), "");
    Finished const run = stat({"-v", "hot"});
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
    std::smatch found;
    ASSERT_TRUE(std::regex_search(run.out, found, std::regex("elements +(\\d+) found")));
    // The stable ones, and no more than all.
    EXPECT_GE(std::stoul(found[1]), 3000u);
    EXPECT_LE(std::stoul(found[1]), 3600u);
}

}  // namespace
