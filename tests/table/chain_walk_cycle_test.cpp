// Chains that run in a circle, and chains that only seem to.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/exception.h"
#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;
using testing::ElementsAre;

class ChainWalkCycleTest : public WalkFixture
{
protected:
    // Walks a chain of `tail` slots that leads into a circle of `length` slots. The slot that the
    // walk found itself back at, and in `handler` what it saw before.
    std::string walkCircle(std::uint32_t tail, std::uint32_t length)
    {
        std::vector<TableImage::Element> elements;
        for (std::uint32_t slot = 0; slot < tail + length; ++slot) {
            elements.emplace_back(slot, "");
        }
        image = TableImage::of("std::int32_t", 4).buckets(2).chain(1, elements);
        image.slotImages[tail + length - 1].next.value = tail;
        open();
        handler.lines.clear();
        debug.lines.clear();
        std::string const start =
            "QuaskReaderGeneric::scan() chain of bucket:1 comes back to slot:";
        try {
            walk();
        } catch (Quask::CorruptionDetectedException const& exception) {
            std::string const what = exception.what();
            EXPECT_THAT(debug.lines, ElementsAre("0 " + what));
            EXPECT_EQ(what.substr(0, start.size()), start);
            return what.substr(start.size());
        }
        return "the walk came to its end";
    }
};

TEST_F(ChainWalkCycleTest, ASlotThatLeadsToItselfEndsTheWalk)
{
    EXPECT_EQ(walkCircle(0, 1), "0");
    EXPECT_THAT(handler.lines, ElementsAre("0: done", "1: slot 0 00000000", "1: slot 0 00000000"));
}

TEST_F(ChainWalkCycleTest, TwoSlotsThatLeadToEachOtherEndTheWalk)
{
    EXPECT_EQ(walkCircle(0, 2), "1");
    EXPECT_THAT(handler.lines, ElementsAre("0: done", "1: slot 0 00000000", "1: slot 1 00000000",
                                           "1: slot 0 00000000", "1: slot 1 00000000"));
}

TEST_F(ChainWalkCycleTest, ACircleOfThreeSlotsEndsTheWalk)
{
    EXPECT_EQ(walkCircle(0, 3), "0");
    EXPECT_EQ(handler.lines.size(), 1u + 7);
}

TEST_F(ChainWalkCycleTest, ATailBeforeTheCircleIsWalkedOnce)
{
    EXPECT_EQ(walkCircle(2, 1), "2");
    EXPECT_THAT(handler.lines,
                ElementsAre("0: done", "1: slot 0 00000000", "1: slot 1 00000000",
                            "1: slot 2 00000000", "1: slot 2 00000000", "1: slot 2 00000000"));
}

TEST_F(ChainWalkCycleTest, EveryCircleEndsTheWalkWithinThreeTimesItsChain)
{
    for (std::uint32_t tail = 0; tail < 20; ++tail) {
        for (std::uint32_t length = 1; length < 40; ++length) {
            std::uint32_t const slot =
                static_cast<std::uint32_t>(std::stoul(walkCircle(tail, length)));
            EXPECT_GE(slot, tail);
            EXPECT_LT(slot, tail + length);
            EXPECT_LE(handler.lines.size(), 1 + 3 * (tail + length)) << tail << " " << length;
            EXPECT_GE(handler.lines.size(), 1 + tail + length);
        }
    }
}

TEST_F(ChainWalkCycleTest, ACircleOfManySlotsEndsTheWalk)
{
    std::uint32_t const slot = static_cast<std::uint32_t>(std::stoul(walkCircle(10000, 90000)));
    EXPECT_GE(slot, 10000u);
    EXPECT_LE(handler.lines.size(), 300001u);
}

TEST_F(ChainWalkCycleTest, AChainOfAllSlotsIsNotACircle)
{
    std::vector<TableImage::Element> elements;
    for (std::uint32_t slot = 0; slot < 5000; ++slot) {
        elements.emplace_back(slot * 7 % 5000, "");
    }
    image.buckets(1).chain(0, elements);
    open();
    walk();
    EXPECT_EQ(handler.lines.size(), 5001u);
}

// After slot 0 the writer takes slot 0 away and puts it in again at the end: the walk meets it
// twice, the second time with a rewritten link.
TEST_F(ChainWalkCycleTest, ASlotThatAWriterPutsInAgainIsNotACircle)
{
    image.buckets(1).chain(0, {{0, bytesOf(10)}, {1, bytesOf(11)}, {2, bytesOf(12)}});
    open();
    handler.when("0: slot 1 0b000000", [this] {
        setHead(0, 1);
        setNext(0, noSlot);
        liveSlots->store64(offsetOf(2), packPair(0, 0));
    });
    walk();
    EXPECT_THAT(handler.lines,
                ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000", "0: slot 2 0c000000",
                            "0: slot 0 0a000000", "0: done v1"));
}

// The walk goes round and round, but never by the same link: each is rewritten between two visits.
TEST_F(ChainWalkCycleTest, AChainThatIsRearrangedAllTheTimeIsNotACircle)
{
    image.buckets(1).chain(0, {{0, ""}, {1, ""}});
    image.slotImages[1].next.value = 0;
    open();
    handler.when("0: slot 0 00000000", [this] { setNext(1, 0); });
    for (std::uint32_t round = 1; round < 100; ++round) {
        std::string const version = " v" + std::to_string(round);
        handler.when("0: slot 0" + version + " 00000000", [this] { setNext(1, 0); });
        handler.when(
            "0: slot 1" + (round == 1 ? "" : " v" + std::to_string(round - 1)) + " 00000000",
            [this, round] { setNext(0, round == 99 ? noSlot : 1); });
    }
    walk();
    EXPECT_EQ(handler.lines.size(), 200u);
    EXPECT_EQ(handler.lines[197], "0: slot 1 v98 00000000");
    EXPECT_EQ(handler.lines[198], "0: slot 0 v99 00000000");
    EXPECT_EQ(handler.lines[199], "0: done v99");
    EXPECT_EQ(restarts, 0u);
}

}  // namespace
