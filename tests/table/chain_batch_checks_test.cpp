// What a batch leaves to the walk one by one. A check that no interleaving needs is left out once,
// to see that it is missed; for the others see tests/interleave.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "table/chain_batch.h"
#include "table/chain_batch_fixture.h"

namespace {

using namespace QuaskTesting;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST_F(ChainBatchTest, AValueBeingRewrittenIsLeftToTheWalk)
{
    image.buckets(65)
        .chain(0, {{0, bytesOf(1)}})
        .chain(63, {{1, bytesOf(2)}})
        .chain(64, {{2, bytesOf(3)}})
        .rewriting(1, bytesOf(2), bytesOf(0x99));
    open();
    walkInBatches();
    EXPECT_THAT(batches(), ElementsAre("batch 64-64"));
    EXPECT_THAT(batchHandler.lines, Contains("63: slot 1 02000000 s2 *"));
    EXPECT_EQ(statistics.lookasideHits, 1u);
}

TEST_F(ChainBatchTest, OnlyTheBitOfValueTwoSaysThatAValueIsBeingRewritten)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    image.slotImages[0].sequence = 0xfffffffd;
    open();
    EXPECT_THAT(walkInBatches(),
                ElementsAre("batch 0-0", "0: slot 0 01000000 s4294967293", "0: done"));
}

TEST_F(ChainBatchTest, TheChainsBeforeOneThatLeadsOutsideAreHandedOut)
{
    image.buckets(3)
        .chain(0, {{0, bytesOf(1)}})
        .chain(1, {{1, bytesOf(2)}, {2, bytesOf(3)}})
        .chain(2, {{3, bytesOf(4)}});
    image.slotImages[1].next.value = 4;
    open();
    EXPECT_EQ(thrownInBatches(),
              "Quask::CorruptionDetectedException(\"Quask::CorruptionDetectedException(\""
              "SlotReaderGenericTable::getSlot out-of-range index: 4 max:3\")\")");
    EXPECT_THAT(batchHandler.lines,
                ElementsAre("0: slot 0 01000000", "0: done", "1: slot 1 02000000"));
}

TEST_F(ChainBatchTest, ACircleIsFoundByTheWalk)
{
    image.buckets(2).chain(0, {{0, bytesOf(1)}}).chain(1, {{1, bytesOf(2)}, {2, bytesOf(3)}});
    image.slotImages[2].next.value = 1;
    open();
    EXPECT_EQ(thrownInBatches(),
              "QuaskReaderGeneric::scan() chain of bucket:1 comes back to slot:2");
    EXPECT_THAT(batchHandler.lines, Contains("0: done"));
    EXPECT_THAT(batchHandler.lines, Not(Contains("1: done")));
}

TEST_F(ChainBatchTest, SlotsThatAreNotAlignedAreLeftToTheWalk)
{
    image.buckets(1);
    image.slotsHeader.slotSize = 28;
    image.slotsHeader.mappedCount = 3;
    image.bucketLinks[0].value = 0;
    image.resize(TableFile::slots, slotsFileSize(28, 3));
    image.patch(TableFile::slots, offsetOf(0), bytesOf(packPair(0, noSlot)));
    open();
    EXPECT_THAT(walkInBatches(), ElementsAre("0: slot 0 00000000", "0: done"));
}

TEST_F(ChainBatchTest, AHeaderThatSaysAnotherValueSizeIsLeftToTheWalk)
{
    image.buckets(1).chain(0, {{0, bytesOf(0x01020304)}});
    open();
    // The walk copies as many bytes as the header says, over those of the value before.
    liveSlots->store32(SlotsOffset::valueSize, 3);
    EXPECT_THAT(walkInBatches(), ElementsAre("0: slot 0 04030200", "0: done"));
}

TEST_F(ChainBatchTest, AFileTooShortForThePublishedCountEndsTheWalkBeforeAnythingIsHandedOut)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    open();
    publish(1000);
    EXPECT_THAT(thrownInBatches(), StartsWith("SlotReaderGeneric::doResize() requesting to map"));
    EXPECT_THAT(batchHandler.lines, testing::IsEmpty());
}

TEST_F(ChainBatchTest, AfterGrowthTheSlotsAreReadInTheirNewMapping)
{
    image.buckets(128).chain(0, {{0, bytesOf(1)}});
    open();
    batchHandler.when("0: done", [this] {
        lengthen(1000);
        setNext(999, noSlot);
        setValue(999, bytesOf(99));
        publish(1000);
        setHead(100, 999);
    });
    walkInBatches();
    EXPECT_THAT(batches(), ElementsAre("batch 0-63"));
    EXPECT_THAT(batchHandler.lines, Contains("100: slot 999 v1 63000000"));
    EXPECT_EQ(statistics.remaps, 1u);
    EXPECT_EQ(restarts, 0u);
}

// A slot of the file that is not counted.
TEST_F(ChainBatchTest, ASlotOutOfReachIsLeftToTheWalk)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    image.bucketLinks[0].value = 1;
    open();
    EXPECT_THAT(thrownInBatches(), HasSubstr("getSlot out-of-range index: 1 max:0"));
    EXPECT_THAT(batchHandler.lines, testing::IsEmpty());
}

struct WithoutReach : Quask::AllWalkChecks
{
    struct Batch : Quask::AllBatchChecks
    {
        static constexpr bool reach = false;
    };
};

TEST_F(ChainBatchTest, WithoutReachASlotIsReadThatIsNotThere)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    image.bucketLinks[0].value = 1;
    open();
    EXPECT_THAT(walkInBatches<WithoutReach>(), Contains("0: slot 1 00000000"));
}

// Slots at every eighth byte of the file, every other one of which is in a chain: its values are
// more than four times the file, which a batch would not notice.
class OverlappingSlots : public ChainBatchTest
{
protected:
    void SetUp() override
    {
        std::uint32_t const length = 200;
        image = TableImage::of("Test::Blob", 256).buckets(1).slots(1);
        image.slotsHeader.slotSize = 8;
        image.slotsHeader.mappedCount = 2 * length;
        image.bucketLinks[0].value = 0;
        image.resize(TableFile::slots, slotsFileSize(24, 2 * length));
        for (std::uint32_t i = 0; i < length; ++i) {
            std::uint32_t const next = i + 1 == length ? noSlot : 2 * (i + 1);
            image.patch(TableFile::slots, SlotsOffset::slot(8, 2 * i), bytesOf(packPair(0, next)));
        }
        open();
    }
};

TEST_F(OverlappingSlots, AreLeftToTheWalk)
{
    EXPECT_EQ(thrownInBatches(),
              "QuaskReaderGeneric::scan() chain of bucket:0 is longer than the file, slot size:8 "
              "value size:256");
    EXPECT_THAT(batches(), testing::IsEmpty());
}

struct WithoutOverlap : Quask::AllWalkChecks
{
    struct Batch : Quask::AllBatchChecks
    {
        static constexpr bool overlap = false;
    };
};

TEST_F(OverlappingSlots, WithoutTheirCheckMayHaveAnyNumberOfValues)
{
    walkInBatches<WithoutOverlap>();
    EXPECT_THAT(batches(), ElementsAre("batch 0-0"));
}

struct WithoutGrowth : Quask::AllWalkChecks
{
    struct Batch : Quask::AllBatchChecks
    {
        static constexpr bool growth = false;
    };
};

TEST_F(ChainBatchTest, WithoutGrowthSlotsAreHandedOutOfAMappingThatIsTooShort)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    open();
    publish(1000);
    EXPECT_THAT(walkInBatches<WithoutGrowth>(), Contains("0: slot 0 01000000"));
}

struct WithoutValueSize : Quask::AllWalkChecks
{
    struct Batch : Quask::AllBatchChecks
    {
        static constexpr bool valueSize = false;
    };
};

TEST_F(ChainBatchTest, WithoutTheValueSizeMoreBytesAreHandedOutThanAValueHas)
{
    image.buckets(1).chain(0, {{0, bytesOf(0x01020304)}});
    open();
    liveSlots->store32(SlotsOffset::valueSize, 3);
    EXPECT_THAT(walkInBatches<WithoutValueSize>(), Contains("0: slot 0 04030201"));
}

class CutTable : public ChainBatchTest
{
protected:
    // Slot 300 does not lie in the first page, which is all that is left.
    void SetUp() override
    {
        image.buckets(2).slots(400).chain(0, {{0, bytesOf(1)}}).chain(1, {{300, bytesOf(2)}});
        open();
        liveSlots->resize(4096);
    }
};

using CutTableDeathTest = CutTable;

TEST_F(CutTableDeathTest, EndsTheRunAfterTheChainsBefore)
{
    EXPECT_EXIT(
        {
            batchHandler.when("0: done", [] { std::cerr << "bucket 0, then: "; });
            walkInBatches();
        },
        testing::ExitedWithCode(1),
        "^bucket 0, then: Quask table file .*/slots was cut short while it was being read\n$");
}

struct WithoutPages : Quask::AllWalkChecks
{
    struct Batch : Quask::AllBatchChecks
    {
        static constexpr bool pages = false;
    };
};

TEST_F(CutTable, WithoutThePagesZerosAreHandedOut)
{
    EXPECT_THAT(walkInBatches<WithoutPages>(), Contains("1: slot 300 00000000"));
}

}  // namespace
