// Tables that no writer would leave so.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "base/exception.h"
#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;
using testing::ElementsAre;

class ChainWalkCorruptionTest : public WalkFixture
{
protected:
    void expectThrown(std::string const& message)
    {
        try {
            walk();
            ADD_FAILURE() << "the walk came to its end";
        } catch (Quask::CorruptionDetectedException const& exception) {
            EXPECT_EQ(exception.what(), message);
        }
        ASSERT_FALSE(debug.lines.empty());
        EXPECT_EQ(debug.lines.back(), "0 " + message);
    }

    static std::string twiceWrapped(std::string const& message)
    {
        return "Quask::CorruptionDetectedException(\"Quask::CorruptionDetectedException(\"" +
               message + "\")\")";
    }

    // That the slot file says to have slots of this size, and that a chain of them is walked.
    void expectWalkOfSlotsOfSize(std::uint32_t slotSize)
    {
        SCOPED_TRACE(slotSize);
        image = TableImage::of("std::int32_t", 4).buckets(1);
        image.slotsHeader.slotSize = slotSize;
        image.slotsHeader.mappedCount = 1000;
        image.bucketLinks[0].value = 100;
        image.resize(TableFile::slots, 30000);
        auto const put = [this](std::uint32_t slot, std::uint32_t next, std::uint32_t value) {
            image.patch(TableFile::slots, offsetOf(slot), bytesOf(packPair(0, next)));
            image.patch(TableFile::slots, offsetOf(slot) + 16, bytesOf(value));
        };
        put(100, 900, 1);
        put(900, 500, 2);
        put(500, noSlot, 3);
        open();
        handler.lines.clear();
        walk();
        EXPECT_THAT(handler.lines, ElementsAre("0: slot 100 01000000", "0: slot 900 02000000",
                                               "0: slot 500 03000000", "0: done"));
    }
};

TEST_F(ChainWalkCorruptionTest, ASlotOutOfRangeEndsTheWalk)
{
    image.buckets(2).chain(0, {{0, ""}}).chain(1, {{1, ""}});
    image.slotImages[1].next.value = 77;
    open();
    expectThrown(twiceWrapped("SlotReaderGenericTable::getSlot out-of-range index: 77 max:1"));
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 00000000", "0: done", "1: slot 1 00000000"));
}

TEST_F(ChainWalkCorruptionTest, ABucketThatLeadsOutOfRangeEndsTheWalk)
{
    image.buckets(1).slots(2);
    image.bucketLinks[0].value = 0xfffffffe;
    open();
    expectThrown(
        twiceWrapped("SlotReaderGenericTable::getSlot out-of-range index: 4294967294 max:1"));
}

TEST_F(ChainWalkCorruptionTest, WithoutSlotsTheBytesWhereSlotZeroWouldBeAreRead)
{
    image.buckets(1).slots(0);
    image.bucketLinks[0].value = 0;
    image.patch(TableFile::slots, 200, bytesOf(packPair(3, noSlot)));
    image.patch(TableFile::slots, 212, bytesOf(4));
    image.patch(TableFile::slots, 216, bytesOf(5));
    open();
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 05000000 s4", "0: done v3"));
}

// The header's check reckons with the smallest slots.
TEST_F(ChainWalkCorruptionTest, ASlotAfterTheMappedPagesEndsTheWalk)
{
    image = TableImage::of("char[1000]", 1000).buckets(1).chain(0, {{0, ""}, {2, ""}, {9, ""}});
    image.resize(TableFile::slots, 5000);
    handler.setSize(1000);
    open();
    expectThrown(
        twiceWrapped("SlotReaderGenericTable::getSlot outside the mapped file index: 9 "
                     "offset:10336 mapped:8192"));
    EXPECT_EQ(handler.lines.size(), 2u);
}

TEST_F(ChainWalkCorruptionTest, AfterTheEndOfTheFileTheLastPageReadsAsZero)
{
    image = TableImage::of("char[100]", 100).buckets(1).chain(0, {{0, "abcd"}});
    image.slotsHeader.mappedCount = 34;
    image.bucketLinks[0].value = 7;  // at 1136; its zeros lead to slot 0
    image.resize(TableFile::slots, 1016);
    open();
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 7 00000000", "0: slot 0 61626364", "0: done"));
}

TEST_F(ChainWalkCorruptionTest, AValueThatReachesOutOfTheMappedPagesEndsTheWalk)
{
    image = TableImage::of("char[100]", 100).buckets(1);
    image.slotsHeader.mappedCount = 34;
    image.bucketLinks[0].value = 31;  // 176 + 120 * 32 is 4016: up to 4096 there are 64 for a value
    image.resize(TableFile::slots, 1016);
    handler.setSize(100);
    open();
    expectThrown(
        twiceWrapped("SlotReaderGenericTable::getSlot outside the mapped file index: 31 "
                     "offset:4016 mapped:4096"));
}

TEST_F(ChainWalkCorruptionTest, OfAValueOnlyTheBytesThatAreCopiedMustBeMapped)
{
    image = TableImage::of("char[100]", 100).buckets(1);
    image.slotsHeader.mappedCount = 34;
    image.bucketLinks[0].value = 31;
    image.resize(TableFile::slots, 4096)
        .patch(TableFile::slots, 4016, bytesOf(packPair(0, noSlot)));
    handler.setSize(64);
    open();
    walk();
    EXPECT_EQ(handler.lines.size(), 2u);
}

TEST_F(ChainWalkCorruptionTest, AnAbsurdValueSizeIsCutToTheHandlersBuffer)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    image.slotsHeader.valueSize = 0xffffffff;
    open();
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 01000000", "0: done"));
}

TEST_F(ChainWalkCorruptionTest, AValueAsLargeAsABufferLargerThanTheFileEndsTheWalk)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    image.slotsHeader.valueSize = 0xffffffff;
    handler.setSize(5000);
    open();
    expectThrown(
        twiceWrapped("SlotReaderGenericTable::getSlot outside the mapped file index: 0 "
                     "offset:200 mapped:4096"));
}

TEST_F(ChainWalkCorruptionTest, SlotsOfAnySizeAreRead)
{
    for (std::uint32_t const slotSize : {20u, 21u, 24u, 25u, 28u, 29u}) {
        expectWalkOfSlotsOfSize(slotSize);
    }
}

// They overlap: what the first says of its successor is the value of another.
TEST_F(ChainWalkCorruptionTest, SlotsSmallerThanTheirFixedWordsAreRead)
{
    for (std::uint32_t const slotSize : {1u, 4u, 7u}) {
        expectWalkOfSlotsOfSize(slotSize);
    }
}

TEST_F(ChainWalkCorruptionTest, SlotsOfSizeZeroAreAllTheLookasideSlot)
{
    image.buckets(1);
    image.slotsHeader.slotSize = 0;
    image.slotsHeader.mappedCount = 6;
    image.bucketLinks[0].value = 5;
    image.resize(TableFile::slots, 400);
    image.patch(TableFile::slots, 176, bytesOf(packPair(0, noSlot)));
    image.patch(TableFile::slots, 188, bytesOf(2));
    image.patch(TableFile::slots, 192, bytesOf(7));
    open();
    walk();
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 5 07000000 s2 *", "0: done"));
}

TEST_F(ChainWalkCorruptionTest, AChainOfOverlappingValuesEndsTheWalkBeforeItTakesManyTimesTheFile)
{
    constexpr std::uint32_t slotCount = 100;
    image = TableImage::of("Large", 4096).buckets(1).slots(slotCount);
    image.slotsHeader.slotSize = 24;
    image.bucketLinks[0].value = 0;
    for (std::uint32_t slot = 0; slot + 1 < slotCount; ++slot) {
        image.slotImages[slot].next.value = slot + 1;
    }
    image.resize(TableFile::slots, 8192);
    handler.setSize(4096);
    open();
    expectThrown(
        "QuaskReaderGeneric::scan() chain of bucket:0 is longer than the file, slot size:24 "
        "value size:4096");
    EXPECT_EQ(handler.lines.size(), 4 * 8192 / 4096 + 1);
}

TEST_F(ChainWalkCorruptionTest, AShortChainOfOverlappingValuesIsWalked)
{
    image = TableImage::of("Large", 4096).buckets(1).slots(8);
    image.slotsHeader.slotSize = 24;
    image.bucketLinks[0].value = 0;
    for (std::uint32_t slot = 0; slot < 7; ++slot) {
        image.slotImages[slot].next.value = slot + 1;
    }
    image.resize(TableFile::slots, 8192);
    handler.setSize(4096);
    open();
    walk();
    EXPECT_EQ(handler.lines.size(), 9u);
    EXPECT_EQ(handler.lines.back(), "0: done");
}

TEST_F(ChainWalkCorruptionTest, ABucketCountThatWrapsEndsTheWalkWhereTheMappingEnds)
{
    image.buckets(3).chain(1, {{0, bytesOf(1)}});
    image.bucketsHeader.numBuckets = 0x20000003;
    open();
    expectThrown(
        "BucketReader::getRef() outside the mapped file, index:509 offset:4096 "
        "mapped:4096");
    ASSERT_EQ(handler.lines.size(), 3u + 1 + 2 * 506);
    EXPECT_EQ(handler.lines[3], "2: done");
    // After the file's end every link leads to slot 0.
    EXPECT_EQ(handler.lines[4], "3: slot 0 01000000");
    EXPECT_EQ(handler.lines.back(), "508: done");
}

TEST_F(ChainWalkCorruptionTest, ASlotCountThatWrapsEndsTheWalkWhereTheMappingEnds)
{
    image.buckets(2).chain(0, {{0, bytesOf(1)}});
    image.slotsHeader.mappedCount = 0x0aaaaaab;
    image.bucketLinks[1].value = 0x0aaaaaaa;
    open();
    expectThrown(
        twiceWrapped("SlotReaderGenericTable::getSlot outside the mapped file index: "
                     "178956970 offset:4294967480 mapped:4096"));
}

TEST_F(ChainWalkCorruptionTest, AFileOfFourGibibytesIsWalkedToItsEnd)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    image.slotsHeader.mappedCount = 178956962;
    image.slotImages[0].next.value = 178956961;
    image.writeTo(root, "eq");
    std::filesystem::resize_file(slotsPath, 5000000000);
    attach();
    // Its zeros lead back to slot 0, whose link leads to it.
    expectThrown("QuaskReaderGeneric::scan() chain of bucket:0 comes back to slot:178956961");
    EXPECT_THAT(handler.lines, ElementsAre("0: slot 0 01000000", "0: slot 178956961 00000000",
                                           "0: slot 0 01000000", "0: slot 178956961 00000000"));
}

using ChainWalkCorruptionDeathTest = ChainWalkCorruptionTest;

TEST_F(ChainWalkCorruptionDeathTest, AFileCutShortDuringTheWalkEndsTheRun)
{
    image.buckets(2).slots(1000).chain(0, {{0, ""}}).chain(1, {{999, ""}});
    open();
    handler.when("0: done", [this] { liveSlots->resize(4096); });
    EXPECT_EXIT(walk(), testing::ExitedWithCode(1),
                "^Quask table file " + slotsPath + " was cut short while it was being read\n$");
}

}  // namespace
