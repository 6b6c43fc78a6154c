#include "table/slot_ref.h"

#include <gtest/gtest.h>

namespace {

using Quask::SlotRef;

TEST(SlotRef, TheVersionIsTheLowHalfOfALinkAndTheIndexTheHigh)
{
    constexpr SlotRef link = Quask::slotRef(0x0000002a00000007);
    EXPECT_EQ(link.version, 7u);
    EXPECT_EQ(link.index, 42u);
    EXPECT_FALSE(link.isNull());
}

TEST(SlotRef, OnlyTheIndexShowsThatALinkLeadsNowhere)
{
    EXPECT_TRUE(Quask::slotRef(0xffffffff00000000).isNull());
    EXPECT_TRUE(Quask::slotRef(0xffffffffffffffff).isNull());
    EXPECT_FALSE(Quask::slotRef(0x00000000ffffffff).isNull());
    EXPECT_FALSE(Quask::slotRef(0xfffffffeffffffff).isNull());
}

}  // namespace
