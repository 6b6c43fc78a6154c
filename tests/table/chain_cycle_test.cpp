#include "table/chain_cycle.h"

#include <gtest/gtest.h>

namespace {

using Quask::ChainCycle;
using Verdict = ChainCycle::Verdict;

constexpr std::uint64_t manySlots = 1000;

TEST(ChainCycle, ASlotWhoseLinkIsTheOneThatWasFollowedClosesTheCircle)
{
    ChainCycle cycle(manySlots);
    EXPECT_EQ(cycle.follow(5, {1, 6}), Verdict::goesOn);
    EXPECT_EQ(cycle.follow(5, {1, 6}), Verdict::circle);
}

TEST(ChainCycle, ASlotWhoseLinkWasRewrittenDoesNot)
{
    ChainCycle cycle(manySlots);
    EXPECT_EQ(cycle.follow(5, {1, 6}), Verdict::goesOn);
    EXPECT_EQ(cycle.follow(5, {2, 6}), Verdict::goesOn);
    EXPECT_EQ(cycle.follow(5, {3, 7}), Verdict::goesOn);
}

TEST(ChainCycle, AnotherSlotWithTheSameLinkDoesNot)
{
    ChainCycle cycle(manySlots);
    EXPECT_EQ(cycle.follow(5, {1, 7}), Verdict::goesOn);
    EXPECT_EQ(cycle.follow(6, {1, 7}), Verdict::goesOn);
}

TEST(ChainCycle, TheFirstSlotIsNotAReturnWhateverItsIndexAndItsLink)
{
    EXPECT_EQ(ChainCycle(manySlots).follow(0, {0, 0}), Verdict::goesOn);
    EXPECT_EQ(ChainCycle(manySlots).follow(0, {0, Quask::SlotRef::null}), Verdict::goesOn);
}

// The slots remembered are the 1st, the 2nd, the 4th, ...
TEST(ChainCycle, ALaterSlotIsRememberedWheneverTheChainIsTwiceAsLong)
{
    ChainCycle cycle(manySlots);
    for (std::uint32_t slot = 1; slot <= 7; ++slot) {
        EXPECT_EQ(cycle.follow(slot, {0, slot + 1}), Verdict::goesOn);
    }
    EXPECT_EQ(cycle.follow(2, {0, 3}), Verdict::goesOn);
    EXPECT_EQ(cycle.follow(2, {0, 3}), Verdict::circle);
    EXPECT_EQ(cycle.follow(4, {0, 5}), Verdict::goesOn);
}

TEST(ChainCycle, CountsItsSteps)
{
    ChainCycle cycle(manySlots);
    EXPECT_EQ(cycle.steps(), 0u);
    for (std::uint32_t slot = 1; slot <= 7; ++slot) {
        cycle.follow(slot, {0, slot + 1});
    }
    EXPECT_EQ(cycle.steps(), 7u);
}

// The steps until a chain of `tail` slots that leads into a circle of `length` slots is found, in a
// table of `slotCount` slots.
std::uint32_t stepsToFind(std::uint32_t tail, std::uint32_t length, std::uint64_t slotCount)
{
    ChainCycle cycle(slotCount);
    std::uint32_t slot = 0;
    for (std::uint32_t steps = 1;; ++steps) {
        std::uint32_t const next = slot + 1 == tail + length ? tail : slot + 1;
        Verdict const verdict = cycle.follow(slot, {9, next});
        if (verdict != Verdict::goesOn) {
            EXPECT_EQ(verdict, Verdict::circle) << tail << " " << length << " " << slotCount;
            return steps;
        }
        slot = next;
    }
}

TEST(ChainCycle, AnyCircleIsFoundWithinThreeTimesTheSlotsOfItsChain)
{
    for (std::uint32_t tail = 0; tail < 70; ++tail) {
        for (std::uint32_t length = 1; length < 70; ++length) {
            std::uint32_t const steps = stepsToFind(tail, length, manySlots);
            EXPECT_GT(steps, tail + length);
            EXPECT_LE(steps, 3 * (tail + length)) << tail << " " << length;
        }
    }
}

TEST(ChainCycle, AnyCircleIsFoundWithinTwiceTheSlotsThatThereAre)
{
    for (std::uint32_t slotCount = 1; slotCount < 70; ++slotCount) {
        for (std::uint32_t chain = 1; chain <= slotCount; ++chain) {
            for (std::uint32_t tail = 0; tail < chain; ++tail) {
                EXPECT_LE(stepsToFind(tail, chain - tail, slotCount), 2 * slotCount);
            }
        }
    }
}

TEST(ChainCycle, AChainThatGoesOnForMoreThanTwiceTheSlotsThatThereAreWasRewritten)
{
    for (std::uint32_t slotCount = 1; slotCount < 70; ++slotCount) {
        ChainCycle cycle(slotCount);
        for (std::uint32_t step = 1; step <= 2 * slotCount; ++step) {
            EXPECT_EQ(cycle.follow(7, {step, 7}), Verdict::goesOn);
        }
        EXPECT_EQ(cycle.follow(7, {2 * slotCount + 1, 7}), Verdict::rewritten);
    }
}

}  // namespace
