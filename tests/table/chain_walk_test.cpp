// Walks over tables that stand still.

#include "table/chain_walk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;
using testing::ElementsAre;
using testing::IsEmpty;

class ChainWalkTest : public WalkFixture
{};

TEST_F(ChainWalkTest, VisitsEveryBucketOnceAndEveryChainInItsOrder)
{
    image.buckets(4)
        .chain(1, {{2, bytesOf(20)}, {0, bytesOf(21)}, {1, bytesOf(22)}})
        .chain(3, {{4, bytesOf(30)}});
    open();
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: done", "1: slot 2 14000000", "1: slot 0 15000000",
                                           "1: slot 1 16000000", "1: done", "2: done",
                                           "3: slot 4 1e000000", "3: done"));
    EXPECT_EQ(restarts, 0u);
    EXPECT_EQ(statistics.lookasideHits, 0u);
    EXPECT_THAT(debug.lines, IsEmpty());
}

TEST_F(ChainWalkTest, ASlotComesWithTheVersionOfItsLinkAndItsStateWord)
{
    image.buckets(1).chain(0, {{1, ""}, {0, ""}});
    image.bucketLinks[0].version = 5;
    image.slotImages[1].next.version = 6;
    image.slotImages[0].next.version = 4294967295;
    image.slotImages[1].sequence = 8;
    image.slotImages[0].sequence = 0xfffffffd;
    open();
    walk();
    EXPECT_THAT(handler.lines,
                ElementsAre("0: slot 1 v5 00000000 s8", "0: slot 0 v6 00000000 s4294967293",
                            "0: done v4294967295"));
}

TEST_F(ChainWalkTest, AnEmptyBucketIsDoneOnceWithItsOwnLink)
{
    image.buckets(1);
    image.bucketLinks[0].version = 7;
    open();
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: done v7"));
}

TEST_F(ChainWalkTest, AValueBeingRewrittenIsTakenFromTheLookasideSlot)
{
    image.buckets(2)
        .chain(0, {{0, bytesOf(1)}, {1, bytesOf(2)}})
        .chain(1, {{2, bytesOf(3)}})
        .rewriting(1, bytesOf(2), bytesOf(0x99));
    open();
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 01000000", "0: slot 1 02000000 s2 *",
                                           "0: done", "1: slot 2 03000000", "1: done"));
    EXPECT_EQ(statistics.lookasideHits, 1u);
}

TEST_F(ChainWalkTest, OnlyTheBitOfValueTwoLeadsToTheLookasideSlot)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}, {1, bytesOf(2)}, {2, bytesOf(3)}});
    image.slotImages[0].sequence = 0xfffffffd;
    image.slotImages[1].sequence = 0xffffffff;
    image.slotImages[2].sequence = 6;
    image.lookaside.value = bytesOf(4);
    open();
    walk();
    EXPECT_THAT(handler.lines,
                ElementsAre("0: slot 0 01000000 s4294967293", "0: slot 1 04000000 s4294967295 *",
                            "0: slot 2 04000000 s6 *", "0: done"));
    EXPECT_EQ(statistics.lookasideHits, 2u);
}

TEST_F(ChainWalkTest, CountersAddUpOverWalks)
{
    image.buckets(1).chain(0, {{0, ""}}).rewriting(0, "", "");
    open();
    walk();
    walk();
    EXPECT_EQ(statistics.lookasideHits, 2u);
}

TEST_F(ChainWalkTest, AValueLongerThanTheHandlersBufferIsCut)
{
    image = TableImage::of("char[12]", 12).buckets(1).chain(0, {{0, "abcdefghijkl"}});
    handler.setSize(9);
    open();
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 61626364 65666768 69", "0: done"));
}

TEST_F(ChainWalkTest, OfABufferLongerThanTheValueTheRestStaysAsItIs)
{
    image.buckets(1).chain(0, {{0, std::string_view("abcdefgh")}});
    handler.setSize(6);
    handler.data[4] = 0x55;
    open();
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 61626364 5500", "0: done"));
}

TEST_F(ChainWalkTest, AValueWithoutBytesIsAnElementAllTheSame)
{
    image = TableImage::of("Quask::EmptyValue", 0).buckets(1).chain(0, {{0, "x"}, {1, "y"}});
    handler.setSize(0);
    open();
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0", "0: slot 1", "0: done"));
}

TEST_F(ChainWalkTest, TheLengthOfAValueIsTheOneThatTheHeaderSaysNow)
{
    image.buckets(2).chain(0, {{0, std::string_view("abcdefgh")}});
    image.chain(1, {{1, std::string_view("ijklmnop")}});
    handler.setSize(8);
    open();
    handler.when("0: done", [this] { liveSlots->store32(SlotsOffset::valueSize, 6); });
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 61626364 00000000", "0: done",
                                           "1: slot 1 696a6b6c 6d6e0000", "1: done"));
}

TEST_F(ChainWalkTest, EndsWhenASlotIsAnsweredWithFalse)
{
    image.buckets(2).chain(0, {{0, ""}, {1, ""}});
    open();
    handler.stopAt = "0: slot 0 00000000";
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 00000000"));
}

TEST_F(ChainWalkTest, EndsWhenAChainsEndIsAnsweredWithFalse)
{
    image.buckets(3).chain(1, {{0, ""}});
    open();
    handler.stopAt = "1: done";
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: done", "1: slot 0 00000000", "1: done"));
}

TEST_F(ChainWalkTest, WhatAHandlerThrowsPassesThrough)
{
    image.buckets(1).chain(0, {{0, ""}});
    open();
    handler.when("0: done", [] { throw std::out_of_range("of the handler"); });
    EXPECT_THROW(walk(), std::out_of_range);
}

TEST_F(ChainWalkTest, ASlotInTwoChainsIsInBoth)
{
    image.buckets(2).chain(0, {{0, ""}, {1, ""}});
    image.bucketLinks[1].value = 1;
    open();
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 00000000", "0: slot 1 00000000", "0: done",
                                           "1: slot 1 00000000", "1: done"));
}

TEST_F(ChainWalkTest, AWalkOverManyBucketsLeavesNoneOut)
{
    image.buckets(1000).slots(3000);
    for (std::uint32_t bucket = 0; bucket < 1000; ++bucket) {
        std::vector<TableImage::Element> elements;
        for (std::uint32_t i = 0; i < bucket % 7; ++i) {
            elements.emplace_back(3 * bucket % 3000 + i % 3, "");
        }
        elements.resize(std::min<std::size_t>(elements.size(), 3));
        image.chain(bucket, elements);
    }
    open();
    walk();
    Lines expected;
    for (std::uint32_t bucket = 0; bucket < 1000; ++bucket) {
        std::string const prefix = std::to_string(bucket) + ": ";
        for (std::uint32_t i = 0; i < std::min(bucket % 7, 3u); ++i) {
            expected.push_back(prefix + "slot " + std::to_string(3 * bucket + i) + " 00000000");
        }
        expected.push_back(prefix + "done");
    }
    EXPECT_EQ(handler.lines, expected);
}

}  // namespace
