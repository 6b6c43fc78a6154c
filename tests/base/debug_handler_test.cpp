#include "base/debug_handler.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "base/exception.h"
#include "support/recording_handler.h"

namespace {

using Dovan::Platform::DebugHandler;
using Dovan::Platform::getDebugHandler;
using QuaskTesting::RecordingHandler;

class DebugHandlerTest : public testing::Test
{
protected:
    ~DebugHandlerTest() override { unsetenv("DOVAN_DEBUG"); }

    // The highest level up to 9 that the channel lets through under these settings, or -1.
    static int highestLevel(char const* settings, char const* channel)
    {
        setenv("DOVAN_DEBUG", settings, 1);
        std::unique_ptr<DebugHandler> const handler(getDebugHandler(channel));
        int highest = -1;
        for (int level = 0; level <= 9; ++level) {
            if (handler->isEnabled(level)) {
                EXPECT_EQ(highest, level - 1) << "a level is enabled and the one below it is not";
                highest = level;
            }
        }
        return highest;
    }
};

TEST_F(DebugHandlerTest, EnablesNothingWithoutTheVariable)
{
    unsetenv("DOVAN_DEBUG");
    std::unique_ptr<DebugHandler> const handler(getDebugHandler("Quask"));
    EXPECT_FALSE(handler->isEnabled(0));
    EXPECT_FALSE(handler->isEnabled(9));
}

TEST_F(DebugHandlerTest, ALevelAloneIsForEveryChannel)
{
    EXPECT_EQ(highestLevel("0", "Quask"), 0);
    EXPECT_EQ(highestLevel("5", "Quask-feed/eq"), 5);
}

TEST_F(DebugHandlerTest, ANamedLevelIsForThatChannelAlone)
{
    EXPECT_EQ(highestLevel("1,Quask-feed/eq=9", "Quask-feed/eq"), 9);
    EXPECT_EQ(highestLevel("1,Quask-feed/eq=9", "Quask-feed/fx"), 1);
    EXPECT_EQ(highestLevel("Quask=3", "QuaskScanner"), -1);
}

TEST_F(DebugHandlerTest, TheLastItemThatMatchesWins)
{
    EXPECT_EQ(highestLevel("Quask=9,1", "Quask"), 1);
    EXPECT_EQ(highestLevel("1,Quask=9,Quask=3", "Quask"), 3);
}

TEST_F(DebugHandlerTest, AMalformedItemIsIgnored)
{
    EXPECT_EQ(highestLevel("", "Quask"), -1);
    EXPECT_EQ(highestLevel(",,", "Quask"), -1);
    EXPECT_EQ(highestLevel("3,all,Quask=,Quask=9x,= 9,99999999999", "Quask"), 3);
}

TEST_F(DebugHandlerTest, AChannelNameMayHoldAnEqualsSign)
{
    EXPECT_EQ(highestLevel("Quask-a=b=5", "Quask-a=b"), 5);
}

TEST_F(DebugHandlerTest, WritesOneLineLedByNameAndLevel)
{
    setenv("DOVAN_DEBUG", "5", 1);
    std::unique_ptr<DebugHandler> const handler(getDebugHandler("Quask-feed/eq"));
    testing::internal::CaptureStderr();
    Dovan::trace(*handler, 5, "SlotTable::detach()");
    Dovan::trace(*handler, 9, "not written");
    Dovan::trace(*handler, 0, "two\nlines");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Quask-feed/eq 5: SlotTable::detach()\nQuask-feed/eq 0: two\\nlines\n");
}

TEST_F(DebugHandlerTest, ANewlineInTheChannelsNameLeavesTheMessageOnOneLine)
{
    setenv("DOVAN_DEBUG", "0", 1);
    std::unique_ptr<DebugHandler> const handler(getDebugHandler("Quask-feed\neq"));
    testing::internal::CaptureStderr();
    Dovan::trace(*handler, 0, "SlotTable::detach()");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Quask-feed\\neq 0: SlotTable::detach()\n");
}

struct Unprintable
{};

std::ostream& operator<<(std::ostream& out, Unprintable const& /*value*/)
{
    ADD_FAILURE() << "text was built for a level that is not enabled";
    return out;
}

TEST(Trace, BuildsNoTextForALevelThatIsNotEnabled)
{
    RecordingHandler handler(-1);
    Dovan::trace(handler, 0, Unprintable());
    EXPECT_TRUE(handler.lines.empty());
}

TEST(Trace, WritesFloatingPointWithTwelveDigits)
{
    RecordingHandler handler;
    Dovan::trace(handler, 1, "third: ", 1.0 / 3.0, " flag: ", true);
    EXPECT_EQ(handler.lines, std::vector<std::string>{"1 third: 0.333333333333 flag: 1"});
}

TEST(LogAndThrow, LogsTheThrownWordsAtLevelZero)
{
    RecordingHandler handler(0);
    EXPECT_THROW(Dovan::logAndThrow<Dovan::RuntimeException>(handler, "Couldn't open /proc"),
                 Dovan::RuntimeException);
    EXPECT_EQ(handler.lines, std::vector<std::string>{"0 Couldn't open /proc"});
}

}  // namespace
