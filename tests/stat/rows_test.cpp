// The rows: every column, and how they are printed.

#include "stat/stat_fixture.h"

namespace {

using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using QuaskTesting::TableImage;

class TwoTables : public QuaskTesting::StatTest
{
protected:
    TwoTables()
    {
        TableImage busy = ordinary();
        busy.slotsHeader.mappedVersion = 3;
        busy.lookaside.sequence = 4 * 12345;
        busy.vandral1.notifications = {9, 700};
        busy.vandral2.notifications = {9, 7};
        busy.writeTo(root, "feed/busy");
        ordinary().writeTo(root, "feed/idle");
    }
};

// One of them has a client in every role.
class Rows : public TwoTables
{
protected:
    MappingClient const writer = clientOf("feed/busy", writing);
    MappingClient const shadow = clientOf("feed/busy", {"vandral.1:r", "slots:r"});
    MappingClient const keyshadow = clientOf("feed/busy", {"orvik:r", "vandral.1:r", "slots:r"});
    MappingClient const reader = clientOf("feed/busy", reading);
    MappingClient const secondReader = clientOf("feed/busy", reading);
};

TEST_F(Rows, ShowTheMostImportantColumns)
{
    Finished const run = stat({});
    std::string const padding(shown(writer).size() - 6, ' ');
    EXPECT_EQ(run.out, "NAME      USED MAX USE% LOAD WRITER" + padding +
                           " READERS STALE STATE\n"
                           "feed/busy   20 100  20% 0.50 " +
                           shown(writer) +
                           "       2     0 ok\n"
                           "feed/idle   20 100  20% 0.50 none  " +
                           padding + "       0     0 ok\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(Rows, HaveAColumnForEverythingThatTheHeadersAndMapsTell)
{
    std::string const all =
        "name,used,mapped,max,use%,buckets,load,writer,readers,shadows,keyshadows,stale,grown,"
        "updates,notifications,value,size,state";
    EXPECT_EQ(stat({"-r", "-o", all, "busy"}).out,
              "NAME USED MAPPED MAX USE% BUCKETS LOAD WRITER READERS SHADOWS KEYSHADOWS STALE "
              "GROWN UPDATES NOTIFICATIONS VALUE SIZE STATE\n"
              "feed/busy 20 32 100 20 40 0.50 " +
                  shown(writer) + " 2 1 1 0 3 12345 707 int 13600 ok\n");
}

TEST_F(Rows, AreJsonWithNumbersAsNumbers)
{
    Finished const run = stat({"-J", "-o", "NAME,USED,USE%,LOAD,WRITER,VALUE,STATE", "idle"});
    EXPECT_EQ(run.out,
              "{\n"
              "   \"tables\": [\n"
              "      {\n"
              "         \"name\": \"feed/idle\",\n"
              "         \"used\": 20,\n"
              "         \"use%\": 20,\n"
              "         \"load\": 0.50,\n"
              "         \"writer\": \"none\",\n"
              "         \"value\": \"int\",\n"
              "         \"state\": \"ok\"\n"
              "      }\n"
              "   ],\n"
              "   \"unread_processes\": 0\n"
              "}\n");
    EXPECT_EQ(run.err, "");
}

TEST_F(Rows, TakeListsOfColumnsAndAdditions)
{
    EXPECT_EQ(stat({"-o", "state,NAME", "idle"}).out, "STATE NAME\nok    feed/idle\n");
    EXPECT_EQ(stat({"-n", "-o", "name", "idle"}).out, "feed/idle\n");
    EXPECT_EQ(stat({"-o", "+VALUE,SIZE", "idle"}).out,
              "NAME      USED MAX USE% LOAD WRITER READERS STALE STATE VALUE  SIZE\n"
              "feed/idle   20 100  20% 0.50 none         0     0 ok    int   13600\n");
}

TEST_F(Rows, FitATerminal)
{
    EXPECT_EQ(onTerminal({"idle"}, 80),
              "NAME      USED MAX USE% LOAD WRITER READERS STALE STATE\n"
              "feed/idle   20 100  20% 0.50 none         0     0 ok\n");
    EXPECT_EQ(onTerminal({"idle"}, 200), onTerminal({"idle"}, 80)) << "no wider than need be";
    EXPECT_EQ(onTerminal({"-o", "NAME,USED,MAX,USE%,STATE", "idle"}, 26),
              "NAME   USED MAX USE% STATE\n"
              "feed/i   20 100  20% ok\n");
}

TEST_F(Rows, AnUnknownColumnIsAnError)
{
    Finished const run = stat({"-o", "NAME,FO\x1bO"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "quask-stat: unknown column: FO\\x1bO\n");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(stat({"-o", "NAME,name"}).err, "quask-stat: column NAME is there already\n");
    EXPECT_EQ(stat({"-o", "NET/S"}).err, "quask-stat: column NET/S needs -i\n");
    EXPECT_EQ(stat({"-o", ""}).err, "quask-stat: unknown column: \n");
}

TEST_F(Rows, NoTableIsAnError)
{
    Finished const run = stat({"nowhere"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "No table was found.\n");
    EXPECT_EQ(run.exitStatus, 1);
}

class RowsOfStrangers : public QuaskTesting::StatTest
{
protected:
    RowsOfStrangers()
    {
        TableImage image = ordinary();
        image.slotsHeader.valueType = "\x1b]0;type\a";
        image.writeTo(root, "a\x1b[31m\nb\xff");
    }
};

TEST_F(RowsOfStrangers, ReachATerminalEscaped)
{
    EXPECT_EQ(onTerminal({"-o", "NAME,VALUE"}, 80),
              "NAME               VALUE\n"
              "a\\x1b[31m\\x0ab\\xff \\x1b]0;type\\x07\n");
}

TEST_F(RowsOfStrangers, AreOneLineInRawOutput)
{
    EXPECT_EQ(stat({"-rn", "-o", "NAME,VALUE"}).out, "a\\x1b[31m\\x0ab\\xff \\x1b]0;type\\x07\n");
}

TEST_F(RowsOfStrangers, AreAsciiInJson)
{
    EXPECT_EQ(stat({"-J", "-o", "NAME,VALUE"}).out,
              "{\n"
              "   \"tables\": [\n"
              "      {\n"
              "         \"name\": \"a\\u001b[31m\\nb\\ufffd\",\n"
              "         \"value\": \"\\u001b]0;type\\u0007\"\n"
              "      }\n"
              "   ],\n"
              "   \"unread_processes\": 0\n"
              "}\n");
}

}  // namespace
