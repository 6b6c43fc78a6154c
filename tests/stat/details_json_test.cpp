// quask-stat -v -J: one table in depth, as JSON.

#include <filesystem>
#include <regex>

#include "stat/details_fixture.h"

namespace {

using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using QuaskTesting::TableFile;
using QuaskTesting::TableImage;

class DetailsAsJson : public QuaskTesting::DetailsTest
{
protected:
    TableImage image() const { return TableImage::load(root.path() + "/feed"); }

    // The value of a member in the text's outermost object, as it is written.
    static std::string member(std::string const& name, std::string const& text)
    {
        std::smatch found;
        std::regex const pattern("\n   \"" + name + "\": ([^]*?),?\n(   )?[\"}]");
        return std::regex_search(text, found, pattern) ? found[1].str() : "no " + name;
    }
};

TEST_F(DetailsAsJson, HaveEverythingThatTheTextHas)
{
    TableImage image = this->image();
    image.vandral1.numReaders = 2;
    image.vandral1.notifications = {9, 700};
    image.vandral2.currentTable = {1, 1};
    image.vandral2.minSequence = 18446744073709551615u;
    image.writeTo(root, "feed");
    Finished const run = stat({"-v", "-J"});
    EXPECT_EQ(run.out, R"({
   "table": {
      "name": "feed",
      "used": 24,
      "mapped": 24,
      "max": 100,
      "use%": 24,
      "buckets": 8,
      "load": 3.00,
      "writer": "none",
      "readers": 0,
      "shadows": 0,
      "keyshadows": 0,
      "stale": 0,
      "grown": 0,
      "updates": 0,
      "notifications": 700,
      "value": "int",
      "size": 13152,
      "state": "ok"
   },
   "headers": {
      "buckets": {
         "stamp": 462994,
         "stamp_pid": 4242,
         "stamp_instance": 7,
         "owner": )" + std::to_string(getpid()) +
                           R"(
      },
      "slots": {
         "stamp": 462994,
         "stamp_pid": 4242,
         "stamp_instance": 7,
         "value_size": 4,
         "slot_size": 24,
         "next_free_slot": null,
         "class": "Quask::Table"
      },
      "vandral_1": {
         "stamp": 462994,
         "stamp_pid": 4242,
         "stamp_instance": 7,
         "current": "primary",
         "readers": 2,
         "notifications": 700,
         "minimum_sequence": 0
      },
      "vandral_2": {
         "stamp": 462994,
         "stamp_pid": 4242,
         "stamp_instance": 7,
         "current": "secondary",
         "readers": 0,
         "notifications": 0,
         "minimum_sequence": 18446744073709551615
      }
   },
   "clients": [],
   "walk": {
      "elements": 24,
      "counted_before": 24,
      "counted_after": 24,
      "difference": "none",
      "load": 3.0,
      "buckets": 8,
      "empty_buckets": 4,
      "ideal_empty_buckets": 0.398296,
      "mean": 3.0,
      "deviation": 6.461423,
      "ideal_deviation": 1.73205,
      "longest": [
         {
            "length": 20,
            "bucket": 3
         },
         {
            "length": 2,
            "bucket": 6
         },
         {
            "length": 1,
            "bucket": 0
         },
         {
            "length": 1,
            "bucket": 5
         }
      ],
      "histogram": [
         {
            "length": 0,
            "buckets": 4
         },
         {
            "length": 1,
            "buckets": 2
         },
         {
            "length": 2,
            "buckets": 1
         },
         {
            "length": 20,
            "buckets": 1
         }
      ],
      "restarts": 0,
      "lookaside_hits": 0
   },
   "unread_processes": 0
}
)");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(DetailsAsJson, ListTheClients)
{
    MappingClient const old = clientOf("feed", reading);
    image().writeTo(root, "feed");
    MappingClient const writer = clientOf("feed", writing);
    std::string const clients = member("clients", stat({"-v", "-J"}).out);
    auto const object = [](MappingClient const& client, std::string const& role, bool isStale) {
        return "      \\{\n         \"pid\": " + std::to_string(client.pid()) +
               ",\n         \"user\": \"\\w+\",\n         \"role\": \"" + role +
               "\",\n         \"stale\": " + (isStale ? "true" : "false") +
               ",\n         \"since\": \"\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\",\n"
               "         \"command\": \"mapping_client\"\n      \\}";
    };
    EXPECT_TRUE(std::regex_match(clients, std::regex("\\[\n" + object(old, "reader", true) + ",\n" +
                                                     object(writer, "writer", false) + "\n   \\]")))
        << clients;
}

TEST_F(DetailsAsJson, HaveNullForWhatCannotBeRead)
{
    TableImage const whole = image();
    TableImage(whole).without(TableFile::vandral2).writeTo(root, "feed");
    Finished const part = stat({"-v", "-J"});
    EXPECT_NE(part.out.find("\"notifications\": null"), part.out.npos);
    EXPECT_NE(part.out.find("\"vandral_1\": null,\n      \"vandral_2\": null\n"), part.out.npos);
    EXPECT_EQ(part.exitStatus, 0);

    TableImage(whole).without(TableFile::slots).writeTo(root, "feed");
    Finished const nothing = stat({"-v", "-J"});
    EXPECT_NE(nothing.out.find("\"used\": null"), nothing.out.npos);
    EXPECT_NE(nothing.out.find("\"buckets\": null,\n      \"slots\": null,\n"), nothing.out.npos);
    EXPECT_EQ(member("walk", nothing.out), "null");
    EXPECT_EQ(nothing.err, "quask-stat: feed cannot be walked: slots: No such file or directory\n");
    EXPECT_EQ(nothing.exitStatus, 1);
}

TEST_F(DetailsAsJson, OfACorruptTableHaveNoWalk)
{
    TableImage image = this->image();
    image.bucketLinks[3].value = 77;
    image.writeTo(root, "feed");
    Finished const run = stat({"-v", "-J"});
    EXPECT_EQ(member("walk", run.out), "null");
    EXPECT_NE(run.out.find("\"used\": 24"), run.out.npos);
    EXPECT_NE(run.err.find("out-of-range index: 77 max:23"), run.err.npos) << run.err;
    EXPECT_EQ(run.exitStatus, 1);
}

TEST_F(DetailsAsJson, OfARemovedTableHaveOnlyItsClients)
{
    MappingClient const old = clientOf("feed", reading);
    std::filesystem::remove_all(root.path() + "/feed");
    Finished const run = stat({"-v", "-J"});
    EXPECT_NE(run.out.find("\"size\": null"), run.out.npos);
    EXPECT_EQ(member("walk", run.out), "null");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(DetailsAsJson, SayWhatADifferenceMeans)
{
    TableImage image = this->image();
    image.slotsHeader.occupiedSlots = 23;
    image.writeTo(root, "feed");
    EXPECT_NE(stat({"-v", "-J"}).out.find("\"difference\": \"writer died\""), std::string::npos);
    MappingClient const writer = clientOf("feed", writing);
    EXPECT_NE(stat({"-v", "-J"}).out.find("\"difference\": \"normal\""), std::string::npos);
}

TEST_F(DetailsAsJson, AreAsciiWhateverNamesAre)
{
    TableImage image = ordinary();
    image.slotsHeader.valueType = "\x1b]0;\"type\\\a";
    image.slotsHeader.classType = "\xc2\x9b\xe2\x82\xac\xf0\x9f\x98\x80";
    image.writeTo(root, "a\x1b[31m\nb\xff");
    std::string const out = stat({"-v", "-J", "a"}).out;
    EXPECT_NE(out.find(R"("name": "a\u001B[31m\nb\uFFFD")"), out.npos) << out;
    EXPECT_NE(out.find(R"("value": "\u001B]0;\"type\\\u0007")"), out.npos) << out;
    EXPECT_NE(out.find(R"("class": "\u009B\u20AC\uD83D\uDE00")"), out.npos) << out;
}

TEST_F(DetailsAsJson, CountWhoCouldNotBeLookedInto)
{
    QuaskTesting::Command command = this->command({"-v", "-J"});
    command.lacking = QuaskTesting::rightsToLookIntoOthers();
    Finished const run = QuaskTesting::run(command);
    // The test's process and the first one in these namespaces.
    EXPECT_EQ(member("unread_processes", run.out), "2");
    EXPECT_EQ(run.err,
              "quask-stat: 2 processes could not be looked into; clients may be missing\n");
}

}  // namespace
