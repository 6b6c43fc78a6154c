// Slot files that grow during a walk.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/exception.h"
#include "support/neighbour.h"
#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;
using testing::ElementsAre;

class ChainWalkGrowthTest : public WalkFixture
{
protected:
    // Bucket 0 leads to slots 0, 1 and 2, with the values 10, 11 and 12; there are no more.
    void SetUp() override
    {
        image.buckets(2).chain(0, {{0, bytesOf(10)}, {1, bytesOf(11)}, {2, bytesOf(12)}});
        open();
    }

    // Grows the table to 1000 slots, the last of which is the only one of bucket 1.
    void grow()
    {
        lengthen(1000);
        setNext(999, noSlot);
        setValue(999, bytesOf(99));
        publish(1000);
        setHead(1, 999);
    }

    void expectThrown(std::string const& message)
    {
        try {
            walk();
            ADD_FAILURE() << "the walk came to its end";
        } catch (Quask::CorruptionDetectedException const& exception) {
            EXPECT_EQ(exception.what(), message);
        }
    }

    static std::string outOfRange(unsigned index, unsigned maximum)
    {
        return "Quask::CorruptionDetectedException(\"Quask::CorruptionDetectedException(\""
               "SlotReaderGenericTable::getSlot out-of-range index: " +
               std::to_string(index) + " max:" + std::to_string(maximum) + "\")\")";
    }

    // To be made when the slots are mapped.
    Neighbour neighbour() const
    {
        return Neighbour(reinterpret_cast<char const*>(&slots->liveHeader()) + 4096);
    }
};

TEST_F(ChainWalkGrowthTest, ASlotBeyondTheMappingIsReadOnceTheTableHasGrown)
{
    handler.when("0: done", [this] { grow(); });
    walk();
    EXPECT_THAT(handler.lines,
                ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000", "0: slot 2 0c000000",
                            "0: done", "1: slot 999 v1 63000000", "1: done v1"));
    EXPECT_EQ(statistics.remaps, 1u);
    EXPECT_EQ(restarts, 0u);
    EXPECT_THAT(debug.lines, testing::IsEmpty());
}

TEST_F(ChainWalkGrowthTest, GrowthInTheMiddleOfAChainThatStaysIsNotARestart)
{
    handler.when("0: slot 0 0a000000", [this] { grow(); });
    walk(0, 1);
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000",
                                           "0: slot 2 0c000000", "0: done"));
    EXPECT_EQ(statistics.remaps, 1u);
    EXPECT_EQ(restarts, 0u);
}

TEST_F(ChainWalkGrowthTest, AMovedMappingIsNotARestart)
{
    Neighbour const taken = neighbour();
    handler.when("0: slot 0 0a000000", [this] { grow(); });
    walk();
    EXPECT_THAT(handler.lines,
                ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000", "0: slot 2 0c000000",
                            "0: done", "1: slot 999 v1 63000000", "1: done v1"));
    EXPECT_EQ(statistics.remaps, 1u);
    EXPECT_EQ(statistics.movedRemaps, 1u);
    EXPECT_EQ(restarts, 0u);
}

TEST_F(ChainWalkGrowthTest, AfterAMoveAChangedLinkIsNoticed)
{
    Neighbour const taken = neighbour();
    handler.when("0: slot 0 0a000000", [this] {
        grow();
        setNext(0, 2);
    });
    walk(0, 1);
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 0a000000", "0: restart", "0: slot 0 0a000000",
                                           "0: slot 2 v1 0c000000", "0: done"));
    EXPECT_EQ(statistics.movedRemaps, 1u);
    EXPECT_EQ(restarts, 1u);
}

TEST_F(ChainWalkGrowthTest, GrowthAtTheHeadOfAChainKeepsTheBucketsLink)
{
    Neighbour const taken = neighbour();
    grow();
    walk(0, 1);
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000",
                                           "0: slot 2 0c000000", "0: done"));
    EXPECT_EQ(statistics.movedRemaps, 1u);
    EXPECT_EQ(restarts, 0u);
}

TEST_F(ChainWalkGrowthTest, ATableMayGrowAtEveryBucket)
{
    image = TableImage::of("std::int32_t", 4).buckets(200).slots(1);
    for (std::uint32_t bucket = 0; bucket < 200; ++bucket) {
        image.bucketLinks[bucket].value = 40 * bucket;
    }
    open();
    for (std::uint32_t bucket = 0; bucket < 199; ++bucket) {
        handler.when(std::to_string(bucket) + ": done v1", [this, bucket] {
            std::uint32_t const count = 40 * (bucket + 1) + 1;
            lengthen(count);
            setNext(count - 1, noSlot);
            publish(count);
        });
    }
    setNext(0, noSlot);
    walk();
    EXPECT_EQ(handler.lines.size(), 400u);
    EXPECT_EQ(handler.lines[398], "199: slot 7960 00000000");
    EXPECT_EQ(handler.lines[399], "199: done v1");
    EXPECT_EQ(statistics.remaps, 199u);
}

TEST_F(ChainWalkGrowthTest, ASlotBeyondThePublishedCountEndsTheWalk)
{
    setNext(2, 3);
    lengthen(1000);
    expectThrown(outOfRange(3, 2));
    EXPECT_THAT(handler.lines,
                ElementsAre("0: slot 0 0a000000", "0: slot 1 0b000000", "0: slot 2 0c000000"));
}

TEST_F(ChainWalkGrowthTest, ASlotBeyondTheGrownCountEndsTheWalk)
{
    setNext(2, 1000);
    handler.when("0: slot 1 0b000000", [this] { grow(); });
    expectThrown(outOfRange(1000, 999));
    EXPECT_EQ(statistics.remaps, 1u);
}

TEST_F(ChainWalkGrowthTest, ASlotThatTheTableShrinksAwayEndsTheWalk)
{
    setNext(2, 3);
    handler.when("0: slot 2 0c000000", [this] { publish(2); });
    expectThrown(outOfRange(3, 1));
}

TEST_F(ChainWalkGrowthTest, ALinkThatAShrunkMappingHasNotIsWalkedToAgain)
{
    image.slots(1000).chain(1, {{900, bytesOf(90)}, {0, bytesOf(10)}});
    image.bucketLinks[0].value = noSlot;
    open();
    handler.when("1: slot 900 5a000000", [this] { publish(3); });
    expectThrown(outOfRange(900, 2));
    EXPECT_THAT(handler.lines, ElementsAre("0: done", "1: slot 900 5a000000", "1: restart"));
    EXPECT_EQ(restarts, 1u);
}

TEST_F(ChainWalkGrowthTest, AFileTooShortForThePublishedCountEndsTheWalk)
{
    handler.when("0: slot 0 0a000000", [this] { publish(4); });
    expectThrown("SlotReaderGeneric::doResize() requesting to map " + slotsPath +
                 " 4 slots. Requested file resize to 296 but real file size is 272");
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 0a000000"));
    EXPECT_EQ(statistics.remaps, 0u);
}

TEST_F(ChainWalkGrowthTest, TheShortFileIsReportedEvenWhenTheSlotIsOutOfRange)
{
    setNext(0, 3);
    handler.when("0: slot 0 0a000000", [this] { publish(4); });
    expectThrown("SlotReaderGeneric::doResize() requesting to map " + slotsPath +
                 " 4 slots. Requested file resize to 296 but real file size is 272");
}

TEST_F(ChainWalkGrowthTest, AMappingThatTheSystemRefusesEndsTheWalk)
{
    image.slotsHeader.slotSize = 16;
    image.slotsHeader.valueSize = 0;
    image.resize(TableFile::slots, 272);
    open();
    handler.setSize(0);
    publish(268435444);
    try {
        walk();
        ADD_FAILURE() << "the walk came to its end";
    } catch (Dovan::MemoryResourceException const& exception) {
        EXPECT_STREQ(exception.what(),
                     "SlotReaderGeneric::doResize() failed to resize shared memory to size 0 - the "
                     "system may be out of memory.");
    }
}

TEST_F(ChainWalkGrowthTest, SlotsThatAreNotAlignedAreFoundInAMovedMappingToo)
{
    image = TableImage::of("std::int32_t", 4).buckets(1);
    image.slotsHeader.slotSize = 28;
    image.slotsHeader.mappedCount = 3;
    image.bucketLinks[0].value = 0;
    image.resize(TableFile::slots, slotsFileSize(28, 3));
    image.patch(TableFile::slots, offsetOf(0), bytesOf(packPair(0, 1)));
    image.patch(TableFile::slots, offsetOf(1), bytesOf(packPair(0, 900)));
    open();
    Neighbour const taken = neighbour();
    handler.when("0: slot 1 00000000", [this] {
        lengthen(1000);
        liveSlots->storeBytes(offsetOf(900), bytesOf(packPair(0, noSlot)));
        setValue(900, bytesOf(7));
        publish(1000);
    });
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 00000000", "0: slot 1 00000000",
                                           "0: slot 900 07000000", "0: done"));
    EXPECT_EQ(statistics.movedRemaps, 1u);
    EXPECT_EQ(restarts, 0u);
}

// What was looked up ahead lies in a mapping that is gone.
TEST_F(ChainWalkGrowthTest, LookingAheadBeginsAgainInAMovedMapping)
{
    image = TableImage::of("std::int32_t", 4).buckets(600).slots(600);
    for (std::uint32_t bucket = 0; bucket < 600; ++bucket) {
        image.chain(bucket, {{bucket, bytesOf(bucket)}});
    }
    open();
    handler.when("100: done", [this] {
        lengthen(100000);
        publish(100000);
    });
    auto const* const end = reinterpret_cast<char const*>(&slots->liveHeader()) + 16384;
    Neighbour const taken(end);
    walk();
    EXPECT_EQ(statistics.movedRemaps, 1u);
    EXPECT_EQ(handler.lines.size(), 1200u);
    EXPECT_EQ(handler.lines[1198], "599: slot 599 57020000");
}

}  // namespace
