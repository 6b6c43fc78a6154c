// Chains that a writer changes between two slots of a walk.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;
using testing::ElementsAre;

class ChainWalkRestartTest : public WalkFixture
{
protected:
    // Bucket 0 leads to slots 0, 1 and 2 with the values 10, 11 and 12; slot 3 has the value 13;
    // bucket 1 leads to slot 4.
    void SetUp() override
    {
        image.buckets(2)
            .slots(4)
            .chain(0, {{0, bytesOf(10)}, {1, bytesOf(11)}, {2, bytesOf(12)}})
            .chain(1, {{4, bytesOf(14)}});
        image.slotImages[3].value = bytesOf(13);
        open();
    }
};

TEST_F(ChainWalkRestartTest, ARewrittenLinkHasTheChainWalkedAgainFromItsHead)
{
    handler.when("0: slot 1 0b000000", [this] { setNext(1, 3); });
    walk();
    EXPECT_THAT(handler.lines,
                ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000", "0: restart",
                            "0: slot 0 0a000000", "0: slot 1 0b000000", "0: slot 3 v1 0d000000",
                            "0: done", "1: slot 4 0e000000", "1: done"));
    EXPECT_EQ(restarts, 1u);
}

TEST_F(ChainWalkRestartTest, TheVersionAloneShowsAChange)
{
    handler.when("0: slot 1 0b000000", [this] { setNext(1, 2); });
    walk();
    EXPECT_THAT(handler.lines,
                ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000", "0: restart",
                            "0: slot 0 0a000000", "0: slot 1 0b000000", "0: slot 2 v1 0c000000",
                            "0: done", "1: slot 4 0e000000", "1: done"));
}

// The index that was loaded with the version is the one that counts.
TEST_F(ChainWalkRestartTest, AnIndexThatChangesWithoutItsVersionIsNotNoticed)
{
    handler.when("0: slot 1 0b000000", [this] { liveSlots->store64(offsetOf(1), packPair(0, 3)); });
    walk(0, 1);
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000",
                                           "0: slot 2 0c000000", "0: done"));
    EXPECT_EQ(restarts, 0u);
}

TEST_F(ChainWalkRestartTest, ALinkThatWasFollowedAndCheckedMayChange)
{
    handler.when("0: slot 1 0b000000", [this] {
        setHead(0, 3);
        setNext(0, 3);
    });
    walk(0, 1);
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000",
                                           "0: slot 2 0c000000", "0: done"));
    EXPECT_EQ(restarts, 0u);
}

TEST_F(ChainWalkRestartTest, AnEndThatWasReadMayChange)
{
    handler.when("0: slot 2 0c000000", [this] { setNext(2, 3); });
    walk(0, 1);
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000",
                                           "0: slot 2 0c000000", "0: done"));
}

TEST_F(ChainWalkRestartTest, AChainThatWasEmptiedDuringTheWalkIsDoneWithoutSlots)
{
    handler.when("0: slot 0 0a000000", [this] {
        setNext(0, noSlot);
        setHead(0, noSlot);
    });
    walk(0, 1);
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 0a000000", "0: restart", "0: done v1"));
}

TEST_F(ChainWalkRestartTest, AChainIsWalkedAgainAsOftenAsItChanges)
{
    for (int i = 0; i < 3; ++i) {
        std::string const version = i == 0 ? "" : " v" + std::to_string(i);
        handler.when("0: slot 0" + version + " 0a000000", [this] {
            setHead(0, 0);
            setNext(0, 1);
        });
    }
    walk(0, 1);
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 0a000000", "0: restart",     //
                                           "0: slot 0 v1 0a000000", "0: restart",  //
                                           "0: slot 0 v2 0a000000", "0: restart",  //
                                           "0: slot 0 v3 0a000000", "0: slot 1 v3 0b000000",
                                           "0: slot 2 0c000000", "0: done"));
    EXPECT_EQ(restarts, 3u);
}

TEST_F(ChainWalkRestartTest, WhatTheHandlerSaysToARestartIsIgnored)
{
    handler.when("0: slot 1 0b000000", [this] { setNext(1, noSlot); });
    handler.stopAt = "0: restart";
    walk(0, 1);
    EXPECT_THAT(handler.lines,
                ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000", "0: restart",
                            "0: slot 0 0a000000", "0: slot 1 0b000000", "0: done v1"));
}

TEST_F(ChainWalkRestartTest, OnlyTheChangedChainIsWalkedAgain)
{
    handler.when("1: slot 4 0e000000", [this] {
        setNext(4, noSlot);
        setNext(4, 3);
    });
    handler.when("0: slot 2 0c000000", [this] { setNext(4, 3); });
    walk();
    EXPECT_THAT(handler.lines,
                ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000", "0: slot 2 0c000000",
                            "0: done", "1: slot 4 0e000000", "1: restart", "1: slot 4 0e000000",
                            "1: slot 3 v3 0d000000", "1: done"));
}

TEST_F(ChainWalkRestartTest, ASlotThatIsTakenAwayDuringTheWalkIsNotShown)
{
    // Slot 1 leaves the chain and becomes another bucket's element while the walk is about to
    // follow the link to it.
    handler.when("0: slot 0 0a000000", [this] {
        setNext(0, 2);
        setValue(1, bytesOf(99));
        setNext(1, 4);
        setHead(1, 1);
    });
    walk();
    EXPECT_THAT(handler.lines,
                ElementsAre("0: slot 0 0a000000", "0: restart", "0: slot 0 0a000000",
                            "0: slot 2 v1 0c000000", "0: done", "1: slot 1 v1 63000000",
                            "1: slot 4 v1 0e000000", "1: done"));
}

TEST_F(ChainWalkRestartTest, AWalkDownwardStartsAgainToo)
{
    handler.when("1: slot 4 0e000000", [this] { setNext(4, noSlot); });
    handler.when("0: slot 0 0a000000", [this] { setNext(0, noSlot); });
    walk(1, 1, Quask::Direction::downward);
    EXPECT_THAT(handler.lines, ElementsAre("1: slot 4 0e000000", "1: done", "0: slot 0 0a000000",
                                           "0: restart", "0: slot 0 0a000000", "0: done v1"));
    EXPECT_EQ(restarts, 1u);
}

}  // namespace
