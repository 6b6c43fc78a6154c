// The walk of quask-stat -v: its progress, and what can happen before it.

#include "stat/walk.h"

#include <filesystem>
#include <fstream>

#include "stat/stat_fixture.h"

namespace {

using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::PseudoTerminal;
using QuaskTesting::TableImage;
using namespace Quask::Stat;

// Of a million slots, one in each bucket. By the clock of the program under test, a walk takes 32
// seconds: an eighth for every 4096 buckets.
class LongWalk : public QuaskTesting::StatTest
{
protected:
    static constexpr unsigned size = 1 << 20;
    static constexpr unsigned step = 4096;

    LongWalk()
    {
        TableImage image = TableImage::of("int", 4).buckets(size).slots(size);
        for (std::uint32_t i = 0; i < size; ++i) {
            image.bucketLinks[i].value = i;
        }
        image.slotsHeader.occupiedSlots = size;
        image.slotsHeader.maxSlots = size;
        image.writeTo(root, "long");
    }

    // After the first second, from then on with every second step.
    static std::string progress()
    {
        std::string text;
        for (unsigned done = 8 * step; done <= size; done += 2 * step) {
            unsigned const eighths = (size - done) / step;
            text += std::to_string(done) + " of " + std::to_string(size) + " buckets, " +
                    std::to_string((eighths + 7) / 8) + " s left\033[K\r";
        }
        return text + "\033[K";
    }
};

TEST_F(LongWalk, ShowsItsProgressOnATerminalAfterASecond)
{
    PseudoTerminal terminal(command({"-v"}), 80, 24);
    terminal.readUntil("\r\nClients\r\n  none\r\n");
    EXPECT_EQ(terminal.readUntil("\r\nWalk\r\n"), progress() + "\r\nWalk\r\n");
    EXPECT_NE(terminal.finish().out.find("1048576 found"), std::string::npos);
}

TEST_F(LongWalk, ShowsItsProgressWhereStandardErrorIsTheTerminalAlone)
{
    Command command = this->command({});
    command.words = {"/bin/sh", "-c",
                     QUASK_STAT_UNDER_TEST " -v -J > " + root.path() + "/out; exit $?"};
    PseudoTerminal terminal(command, 80, 24);
    Finished const run = terminal.finish();
    std::string expected = progress();
    std::erase(expected, '\r');
    EXPECT_EQ(run.out, expected);
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(LongWalk, ShowsItsProgressNowhereElse)
{
    EXPECT_EQ(stat({"-v"}).err, "");
    Command command = this->command({});
    command.words = {"/bin/sh", "-c",
                     QUASK_STAT_UNDER_TEST " -v 2> " + root.path() + "/errors; exit $?"};
    std::string const out = PseudoTerminal(command, 80, 24).finish().out;
    EXPECT_EQ(out.find("left"), out.npos);
    EXPECT_NE(out.find("1048576 found"), out.npos);
    EXPECT_EQ(std::filesystem::file_size(root.path() + "/errors"), 0u);
}

// A table that was looked at, and what is done to it before its walk.
class WalkTest : public QuaskTesting::StatTest
{
protected:
    WalkTest()
    {
        ordinary().writeTo(root, "feed");
        look.name = "feed";
        look.figures = readTableFigures("feed");
    }

    void expectNone(std::string const& reason) const
    {
        testing::internal::CaptureStderr();
        EXPECT_FALSE(walkTable(look).has_value());
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "quask-stat: feed cannot be walked: " + reason + "\n");
    }

    TableLook look;
};

TEST_F(WalkTest, IsOfTheTableThatWasLookedAt)
{
    std::optional<Walk> const walk = walkTable(look);
    ASSERT_TRUE(walk.has_value());
    EXPECT_EQ(walk->chains.buckets(), 40u);
    EXPECT_EQ(walk->countedBefore, 20u);
    EXPECT_EQ(walk->countedAfter, 20u);
    EXPECT_EQ(walk->difference, Difference::writerDied) << "its slots are in no chain";
}

TEST_F(WalkTest, IsNotOfAnotherTableInItsPlace)
{
    ordinary().writeTo(root, "feed");
    expectNone("it has been replaced or removed");
}

TEST_F(WalkTest, IsNotOfATableWithAnotherFileInPlaceOfOne)
{
    std::string const slots = root.path() + "/feed/slots";
    std::filesystem::copy(slots, slots + ".new");
    std::filesystem::rename(slots + ".new", slots);
    expectNone("it has been replaced or removed");
}

TEST_F(WalkTest, IsNotOfARemovedTable)
{
    std::filesystem::remove_all(root.path() + "/feed");
    expectNone("it has been replaced or removed");
}

TEST_F(WalkTest, IsNotOfATableWhoseHeadersFailTheirChecksByThen)
{
    std::fstream(root.path() + "/feed/buckets").seekp(8).put('\2');
    expectNone("BucketTable::validate() bad version: 2");
}

}  // namespace
