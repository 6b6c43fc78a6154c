#include "table/chain_cycle.h"

#include <gtest/gtest.h>

namespace {

using Quask::ChainCycle;

TEST(ChainCycle, ASlotWhoseLinkIsTheOneThatWasFollowedClosesTheCircle)
{
    ChainCycle cycle;
    EXPECT_FALSE(cycle.closesAt(5, {1, 6}));
    EXPECT_TRUE(cycle.closesAt(5, {1, 6}));
}

TEST(ChainCycle, ASlotWhoseLinkWasRewrittenDoesNot)
{
    ChainCycle cycle;
    EXPECT_FALSE(cycle.closesAt(5, {1, 6}));
    EXPECT_FALSE(cycle.closesAt(5, {2, 6}));
    EXPECT_FALSE(cycle.closesAt(5, {3, 7}));
}

TEST(ChainCycle, AnotherSlotWithTheSameLinkDoesNot)
{
    ChainCycle cycle;
    EXPECT_FALSE(cycle.closesAt(5, {1, 7}));
    EXPECT_FALSE(cycle.closesAt(6, {1, 7}));
}

TEST(ChainCycle, TheFirstSlotIsNoReturnWhateverItsIndexAndItsLink)
{
    EXPECT_FALSE(ChainCycle().closesAt(0, {0, 0}));
    EXPECT_FALSE(ChainCycle().closesAt(0, {0, Quask::SlotRef::null}));
}

// The slots remembered are the 1st, the 2nd, the 4th, ...
TEST(ChainCycle, ALaterSlotIsRememberedWheneverTheChainIsTwiceAsLong)
{
    ChainCycle cycle;
    for (std::uint32_t slot = 1; slot <= 7; ++slot) {
        EXPECT_FALSE(cycle.closesAt(slot, {0, slot + 1}));
    }
    EXPECT_FALSE(cycle.closesAt(2, {0, 3}));
    EXPECT_TRUE(cycle.closesAt(2, {0, 3}));
    EXPECT_FALSE(cycle.closesAt(4, {0, 5}));
}

TEST(ChainCycle, AnyCircleIsFoundWithinThreeTimesTheSlotsOfItsChain)
{
    for (std::uint32_t tail = 0; tail < 70; ++tail) {
        for (std::uint32_t length = 1; length < 70; ++length) {
            ChainCycle cycle;
            std::uint32_t steps = 1;
            std::uint32_t slot = 0;
            for (;; ++steps) {
                std::uint32_t const next = slot + 1 == tail + length ? tail : slot + 1;
                if (cycle.closesAt(slot, {9, next})) {
                    break;
                }
                ASSERT_LE(steps, 3 * (tail + length)) << tail << " " << length;
                slot = next;
            }
            EXPECT_GT(steps, tail + length);
        }
    }
}

}  // namespace
