#include "stat/rates.h"

#include <gtest/gtest.h>

#include "stat/table_looks.h"

namespace {

using namespace Quask::Stat;
using namespace std::chrono_literals;

class RatesTest : public testing::Test
{
protected:
    TableFigures const before = QuaskTesting::lookOf(QuaskTesting::ordinaryTable()).figures;
    TableFigures after = before;
};

TEST_F(RatesTest, ArePerSecond)
{
    after.main->slots.lookaside.sequence += 4 * 30;
    after.main->slots.mappedSlots.version += 1;
    after.main->slots.occupiedSlots -= 5;
    after.notifications->primary.notifications.value += 6;
    after.notifications->secondary.notifications.value += 4;
    auto const rates = ratesBetween(before, after, 2s);
    ASSERT_TRUE(rates);
    EXPECT_DOUBLE_EQ(rates->updates, 15);
    EXPECT_DOUBLE_EQ(rates->growths, 0.5);
    EXPECT_DOUBLE_EQ(rates->net, -2.5);
    EXPECT_DOUBLE_EQ(rates->notifications, 5);
}

TEST_F(RatesTest, CountersMayGoPastTheirEnd)
{
    TableFigures early = before;
    early.main->slots.lookaside.sequence = 0xfffffffc;
    after.main->slots.lookaside.sequence = 8;
    early.notifications->primary.notifications.value = 0xffffffff;
    after.notifications->primary.notifications.value = 1;
    auto const rates = ratesBetween(early, after, 1s);
    ASSERT_TRUE(rates);
    EXPECT_DOUBLE_EQ(rates->updates, 3);
    EXPECT_DOUBLE_EQ(rates->notifications, 2);
}

TEST_F(RatesTest, AreNotThereForAReplacedTable)
{
    after.files[0]->inode += 1;
    EXPECT_FALSE(ratesBetween(before, after, 1s));
}

TEST_F(RatesTest, AreNotThereWhenHeadersWereNotReadOrNoTimeHasPassed)
{
    EXPECT_FALSE(ratesBetween(before, after, 0s));
    after.main.reset();
    EXPECT_FALSE(ratesBetween(before, after, 1s));
    EXPECT_FALSE(ratesBetween(after, before, 1s));
}

}  // namespace
