// Batches of tables that stand still: that they come to the same as a walk one by one, whatever the
// table looks like, and which chains they are of.

#include "table/chain_batch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/neighbour.h"
#include "support/random_table.h"
#include "table/chain_batch_fixture.h"

namespace {

using namespace QuaskTesting;
using testing::Contains;
using testing::ElementsAre;

TEST_F(ChainBatchTest, ChainsComeInTheirOrderWithAllThatIsKnownOfThem)
{
    image.buckets(4).chain(1, {{2, bytesOf(20)}, {0, bytesOf(21)}}).chain(3, {{4, bytesOf(30)}});
    image.bucketLinks[1].version = 5;
    image.slotImages[2].next.version = 6;
    image.slotImages[0].next.version = 7;
    image.slotImages[0].sequence = 0xfffffffd;
    open();
    EXPECT_THAT(walkInBatches(), ElementsAre("batch 0-3", "1: slot 2 v5 14000000",
                                             "1: slot 0 v6 15000000 s4294967293", "1: done v7",
                                             "3: slot 4 1e000000", "3: done"));
    EXPECT_EQ(restarts, 0u);
    EXPECT_EQ(statistics.lookasideHits, 0u);
    EXPECT_THAT(debug.lines, testing::IsEmpty());
}

TEST_F(ChainBatchTest, ABatchHasSixtyFourBucketsAndTheLastOneWhatIsLeft)
{
    image.buckets(150);
    open();
    EXPECT_THAT(walkInBatches(), ElementsAre("batch 0-63", "batch 64-127", "batch 128-149"));
}

TEST_F(ChainBatchTest, OnlyTheBucketsThatAreAskedForAreRead)
{
    image.buckets(300);
    open();
    EXPECT_THAT(walkInBatches(70, 100), ElementsAre("batch 70-127", "batch 128-169"));
}

TEST_F(ChainBatchTest, AWalkDownwardOrByTheNumberOfFilledBucketsHasNone)
{
    image.buckets(3).chain(1, {{0, bytesOf(1)}});
    open();
    walkWith(batchHandler, 2, 3, Quask::Direction{0}, true);
    EXPECT_THAT(batchHandler.lines,
                ElementsAre("2: done", "1: slot 0 01000000", "1: done", "0: done"));
    batchHandler.lines.clear();
    walkWith(batchHandler, 0, 3, Quask::Direction::upward, false);
    EXPECT_THAT(batches(), testing::IsEmpty());
    EXPECT_EQ(batchHandler.lines.size(), 4u);
}

TEST_F(ChainBatchTest, TheWalkEndsWhenTheHandlerWantsNoMore)
{
    image.buckets(200);
    open();
    batchHandler.stopAt = "batch 64-127";
    EXPECT_THAT(walkInBatches(), ElementsAre("batch 0-63", "batch 64-127"));
}

TEST_F(ChainBatchTest, ATableOfAnyShapeIsTheSameAsWalkedOneByOne)
{
    std::uint32_t seed = 0;
    for (std::uint32_t const valueSize : {0u, 1u, 4u, 8u, 12u, 13u, 64u, 256u, 257u, 1000u}) {
        for (std::uint32_t const elements : {0u, 1u, 100u, 250u, 2000u}) {
            RandomTable const table{"Test::Blob", valueSize, 250, elements, ++seed};
            expectTheSame(table.image());
            bool const fits = valueSize <= Quask::ChainBatch::largestValue && elements <= 250;
            EXPECT_TRUE(!fits || batches().size() == 4) << valueSize << " " << elements;
        }
    }
}

TEST_F(ChainBatchTest, ChainsOfAnyLengthAreTheSameAsWalkedOneByOne)
{
    for (std::uint32_t const length : {1u, 2u, 3u, 15u, 16u, 17u, 40u, 300u}) {
        expectTheSame(chainsOf(length, 130));
        // As many elements as a batch has room for are just sixteen for each bucket.
        EXPECT_EQ(std::count(batchHandler.lines.begin(), batchHandler.lines.end(), "batch 0-63"),
                  length <= 16 ? 1 : 0)
            << length;
    }
}

TEST_F(ChainBatchTest, ValuesOfWhichThereIsRoomForFewerMakeABatchSmaller)
{
    image = RandomTable{"Test::Blob", 256, 64, 256, 1}.image();
    open();
    walkInBatches();
    EXPECT_THAT(batches(), ElementsAre("batch 0-63"));
    batchHandler.lines.clear();
    image = RandomTable{"Test::Blob", 256, 64, 257, 1}.image();
    open();
    walkInBatches();
    EXPECT_THAT(batches(), testing::IsEmpty());
}

TEST_F(ChainBatchTest, LargeValuesAreNotReadInBatches)
{
    for (std::uint32_t const valueSize : {256u, 257u}) {
        image = TableImage::of("Test::Blob", valueSize).buckets(1).chain(0, {{0, "x"}});
        open();
        batchHandler.lines.clear();
        walkInBatches();
        EXPECT_EQ(batches().size(), valueSize == 256 ? 1u : 0u);
    }
}

// The waste is bounded: the more batches in a row come to nothing, the fewer are tried.
TEST_F(ChainBatchTest, ATableThatIsNotMadeForBatchesIsSoonWalkedWithoutThem)
{
    image = chainsOf(17, 64 * 40);
    // These would be good. But the batches 0, 1 and 4 are not, and none, two and six are left out
    // after them.
    for (std::uint32_t const batch : {2u, 3u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u}) {
        for (std::uint32_t bucket = 64 * batch; bucket < 64 * (batch + 1); ++bucket) {
            image.bucketLinks[bucket].value = noSlot;
        }
    }
    open();
    walkInBatches();
    EXPECT_THAT(batches(), ElementsAre("batch 704-767", "batch 768-831"));
}

// Many buckets that lead to one chain: each is in order, but all together have far more elements
// than there are slots.
TEST_F(ChainBatchTest, TheElementsOfBatchesCountToThoseThatATableMayHave)
{
    std::uint32_t const length = 16;
    std::uint32_t const allowed = 16 * length + (1u << 20);
    std::uint32_t const bucketCount = allowed / length + 1;
    image = chainsOf(length, 1).buckets(bucketCount);
    for (PairImage& link : image.bucketLinks) {
        link.value = 0;
    }
    open();
    EXPECT_EQ(
        thrownInBatches(),
        "QuaskReaderGeneric::scan() the chains up to bucket:" + std::to_string(bucketCount - 1) +
            " lead to elements:" + std::to_string(allowed + length) + " slots:16");
}

// The files end with their pages, and the next page may not be touched.
TEST_F(ChainBatchTest, TheLastBucketAndTheLastSlotAreReadAndNothingAfterThem)
{
    std::uint32_t const bucketCount = (4096 - 24) / 8;
    std::uint32_t const slotCount = (8192 - SlotsOffset::slot(slotSizeFor(8), 0)) / slotSizeFor(8);
    image = TableImage::of("Test::Blob", 8).buckets(bucketCount).slots(slotCount);
    image.chain(bucketCount - 1, {{slotCount - 1, "abcdefgh"}});
    open();
    ASSERT_EQ(slots->readableSize(), SlotsOffset::slot(slotSizeFor(8), slotCount));
    Neighbour const afterBuckets(reinterpret_cast<char const*>(&buckets->liveHeader()) + 4096);
    Neighbour const afterSlots(reinterpret_cast<char const*>(&slots->liveHeader()) + 8192);
    EXPECT_THAT(walkInBatches(), Contains("508: slot 332 61626364 65666768"));
    EXPECT_EQ(batches().back(), "batch 448-508");
}

}  // namespace
