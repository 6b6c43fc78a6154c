#include "stat/walk_progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using Quask::Stat::WalkProgress;
using namespace std::chrono_literals;

class WalkProgressTest : public testing::Test
{
protected:
    WalkProgress::Clock::time_point time;
    std::ostringstream out;
};

TEST_F(WalkProgressTest, IsSaidAfterASecondAndGoneAtTheEnd)
{
    {
        WalkProgress progress(&out, 1000, [this] { return time; });
        time += 999ms;
        progress.show(100);
        EXPECT_EQ(out.str(), "");
        time += 1ms;
        progress.show(250);
        EXPECT_EQ(out.str(), "250 of 1000 buckets, 3 s left\033[K\r");
        time += 100ms;
        progress.show(300);
        EXPECT_EQ(out.str(), "250 of 1000 buckets, 3 s left\033[K\r") << "not all the time";
        time += 900ms;
        progress.show(900);
        EXPECT_EQ(out.str(),
                  "250 of 1000 buckets, 3 s left\033[K\r"
                  "900 of 1000 buckets, 1 s left\033[K\r");
        out.str("");
    }
    EXPECT_EQ(out.str(), "\033[K");
}

TEST_F(WalkProgressTest, OfAShortWalkIsNotSaid)
{
    {
        WalkProgress progress(&out, 10, [this] { return time; });
        progress.show(10);
    }
    EXPECT_EQ(out.str(), "");
}

TEST_F(WalkProgressTest, IsSaidNowhereElse)
{
    WalkProgress progress(nullptr, 10, [this] { return time; });
    time += 5s;
    progress.show(5);
}

}  // namespace
