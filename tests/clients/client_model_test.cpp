#include "clients/client_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <set>
#include <sstream>

namespace {

using Quask::QuaskType;
using Quask::Model::HeaderInfo;
using Quask::Model::QuaskClient;
using Quask::Model::QuaskTable;

TEST(QuaskType, ValuesAreThoseOfTheClientMap)
{
    EXPECT_EQ(static_cast<int>(QuaskType::writer), 0);
    EXPECT_EQ(static_cast<int>(QuaskType::shadow), 1);
    EXPECT_EQ(static_cast<int>(QuaskType::reader), 2);
    EXPECT_EQ(static_cast<int>(QuaskType::keyshadow), 3);
}

TEST(QuaskClient, PidsOrderAsSignedNumbersBeforeTheNames)
{
    EXPECT_LT((QuaskClient{-1, "z", "z"}), (QuaskClient{0, "a", "a"}));
    EXPECT_LT((QuaskClient{9, "z", "z"}), (QuaskClient{10, "a", "a"}));
}

TEST(QuaskClient, NamesOrderByteByByteAndAPrefixComesFirst)
{
    EXPECT_LT((QuaskClient{1, "feed", "z"}), (QuaskClient{1, "feeder", "a"}));
    EXPECT_LT((QuaskClient{1, "a", "z"}), (QuaskClient{1, "\xc3\xa4", "a"}));
    EXPECT_LT((QuaskClient{1, "a", "feed"}), (QuaskClient{1, "a", "feeder"}));
}

TEST(QuaskClient, EqualWhenAllThreeFieldsAre)
{
    EXPECT_EQ((QuaskClient{1, "a", "b"}), (QuaskClient{1, "a", "b"}));
    EXPECT_NE((QuaskClient{1, "a", "b"}), (QuaskClient{1, "a", "c"}));
}

TEST(HeaderInfo, AFreshOneHasNothingAvailable)
{
    EXPECT_EQ(HeaderInfo().print(),
              "Capacity: slots:NA buckets:NA primary_notifications:NA secondary_notifications:NA\n"
              "Occupied slots: NA\n");
}

TEST(HeaderInfo, ZeroAndTheLargestNumbersAreFigures)
{
    HeaderInfo info;
    info.buckets = 0;
    info.primaryNotifications = 1024;
    info.secondaryNotifications = 2048;
    info.slots = 0xFFFFFFFE;
    info.occupiedSlots = 0;
    EXPECT_EQ(info.print(),
              "Capacity: slots:4294967294 buckets:0 primary_notifications:1024 "
              "secondary_notifications:2048\n"
              "Occupied slots: 0\n");
}

TEST(HeaderInfo, IsCompleteWhenNoneOfTheFiveIsMissing)
{
    HeaderInfo const complete{1, 2, 0, 4, 5};
    EXPECT_TRUE(complete.isComplete());
    EXPECT_FALSE(HeaderInfo().isComplete());
    for (auto const figure :
         {&HeaderInfo::buckets, &HeaderInfo::primaryNotifications,
          &HeaderInfo::secondaryNotifications, &HeaderInfo::slots, &HeaderInfo::occupiedSlots}) {
        HeaderInfo info = complete;
        info.*figure = HeaderInfo::notAvailable;
        EXPECT_FALSE(info.isComplete());
    }
}

TEST(QuaskTable, ADefaultOneHasNoNameAndNoRoles)
{
    QuaskTable const table;
    EXPECT_EQ(table.name, "");
    EXPECT_TRUE(table.clients.empty());
    EXPECT_EQ(table.headerInfo.buckets, HeaderInfo::notAvailable);
}

TEST(QuaskTable, ANamedOneHasAnEmptyListForEveryRole)
{
    QuaskTable const table("/dev/shm/quask/feed");
    EXPECT_EQ(table.name, "/dev/shm/quask/feed");
    EXPECT_EQ(table.clients.size(), 4u);
    for (auto const& [type, clients] : table.clients) {
        EXPECT_TRUE(clients.empty());
    }
}

TEST(QuaskTable, TheListsGoToTheirRoles)
{
    QuaskTable const table("t", {{1, "w", ""}}, {{2, "s", ""}}, {{3, "k", ""}}, {{4, "r", ""}});
    EXPECT_EQ(table.clients.at(QuaskType::writer).at(0).pid, 1);
    EXPECT_EQ(table.clients.at(QuaskType::shadow).at(0).pid, 2);
    EXPECT_EQ(table.clients.at(QuaskType::keyshadow).at(0).pid, 3);
    EXPECT_EQ(table.clients.at(QuaskType::reader).at(0).pid, 4);
}

TEST(QuaskTable, OrdersByNameAlone)
{
    QuaskTable const empty("feed");
    QuaskTable const used("feed", {{1, "w", ""}}, {}, {}, {});
    EXPECT_FALSE(empty < used);
    EXPECT_FALSE(used < empty);
    EXPECT_LT(QuaskTable("feed"), QuaskTable("feeder"));

    std::set<QuaskTable> tables{used};
    EXPECT_FALSE(tables.insert(empty).second) << "a second table of the same name is dropped";
}

TEST(QuaskTable, WithoutClientsSaysSo)
{
    EXPECT_EQ(QuaskTable("/dev/shm/quask/feed").print(),
              "Quask table \"/dev/shm/quask/feed\"\n"
              "Capacity: slots:NA buckets:NA primary_notifications:NA secondary_notifications:NA\n"
              "Occupied slots: NA\n"
              "Clients: None\n\n");
    EXPECT_EQ(QuaskTable().print(),
              "Quask table \"\"\n"
              "Capacity: slots:NA buckets:NA primary_notifications:NA secondary_notifications:NA\n"
              "Occupied slots: NA\n"
              "Clients: None\n\n");
}

TEST(QuaskTable, OneWriterIsListedAndTheOtherRolesHaveNone)
{
    EXPECT_EQ(QuaskTable("t", {{4711, "feeder", "feeder"}}, {}, {}, {}).print(),
              "Quask table \"t\"\n"
              "Capacity: slots:NA buckets:NA primary_notifications:NA secondary_notifications:NA\n"
              "Occupied slots: NA\n"
              "Writer: feeder-4711(feeder) \n"
              "Shadow: None\n"
              "Keyshadow: None\n"
              "Reader: None\n\n");
}

TEST(QuaskTable, EachRoleHasItsLineAndEveryClientASpaceAfterIt)
{
    QuaskTable const table("t", {{2, "proc", "cmd"}, {1, "proc", ""}}, {{3, "s", "s"}},
                           {{4, "k", "k"}}, {{-5, "r", "r"}});
    std::string const text = table.print();
    EXPECT_EQ(text.substr(text.find("Writer")),
              "Writer: cmd-2(proc) -1(proc) \n"
              "Shadow: s-3(s) \n"
              "Keyshadow: k-4(k) \n"
              "Reader: r--5(r) \n\n");
}

TEST(QuaskTable, ARoleWithoutAListIsReportedAndHasNone)
{
    QuaskTable table;
    table.clients[QuaskType::keyshadow] = {{7, "k", "k"}};
    testing::internal::CaptureStderr();
    std::string const text = table.print();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error getting clients of type reader\n"
              "Error getting clients of type shadow\n"
              "Error getting clients of type writer\n");
    EXPECT_EQ(text.substr(text.find("Writer")),
              "Writer: None\nShadow: None\nKeyshadow: k-7(k) \nReader: None\n\n");

    testing::internal::CaptureStderr();
    EXPECT_EQ(QuaskTable().printClients(QuaskType::keyshadow), "None");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error getting clients of type keyshadow\n");
}

// Remembers the text printed, and the size of the largest piece.
class PiecesRecorder : public std::stringbuf
{
public:
    std::streamsize largest = 0;

protected:
    std::streamsize xsputn(char const* text, std::streamsize count) override
    {
        largest = std::max(largest, count);
        return std::stringbuf::xsputn(text, count);
    }
};

TEST(QuaskTable, AShortTextIsPrintedInOnePiece)
{
    QuaskTable const table("t", {{1, "w", "w"}}, {{2, "s", "s"}}, {}, {{4, "r", "r"}});
    PiecesRecorder pieces;
    std::ostream out(&pieces);
    table.print(out);
    EXPECT_EQ(pieces.str(), table.print());
    EXPECT_EQ(pieces.largest, static_cast<std::streamsize>(table.print().size()));
}

TEST(QuaskTable, ALongTextIsPrintedInPieces)
{
    QuaskTable::ClientList const many(100'000, QuaskClient{1, "process", "command"});
    QuaskTable const table("t", many, many, many, many);
    std::string list;
    for (int i = 0; i < 100'000; ++i) {
        list += "command-1(process) ";
    }
    PiecesRecorder pieces;
    std::ostream out(&pieces);
    table.print(out);
    EXPECT_EQ(pieces.str(),
              "Quask table \"t\"\n"
              "Capacity: slots:NA buckets:NA primary_notifications:NA secondary_notifications:NA\n"
              "Occupied slots: NA\n"
              "Writer: " +
                  list + "\nShadow: " + list + "\nKeyshadow: " + list + "\nReader: " + list +
                  "\n\n");
    EXPECT_LT(pieces.largest, 70'000);
}

}  // namespace
