// What looking ahead must not do: nothing that a walk reports shows it, but a stray load would end
// the process.

#include "table/chain_prefetch.h"

#include <gtest/gtest.h>

#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;
using Quask::ChainPrefetch;

class ChainPrefetchTest : public WalkFixture
{
protected:
    // Looks ahead from every bucket, as the walk does.
    void lookAhead(unsigned bytes)
    {
        ChainPrefetch prefetch(*buckets, slots->layout(bytes), bytes);
        for (unsigned index = 0; index < buckets->bucketCount(); ++index) {
            prefetch.advance(index);
        }
    }
};

TEST_F(ChainPrefetchTest, LinksThatLeadNowhereAreNotFollowed)
{
    image.buckets(2000).slots(10);
    for (std::uint32_t bucket = 0; bucket < 2000; ++bucket) {
        // Far outside the mapping, or into it, where the next link is one of these.
        image.bucketLinks[bucket].value = bucket % 2 == 0 ? 0xfffffffe - bucket : bucket % 10;
        image.slotImages[bucket % 10].next.value = 0x80000000 + bucket;
    }
    open();
    lookAhead(4);
}

TEST_F(ChainPrefetchTest, SlotsThatTheCountHasButTheMappingHasNotAreNotRead)
{
    image = TableImage::of("char[1000]", 1000).buckets(200);
    image.slotsHeader.mappedCount = 1000;
    image.resize(TableFile::slots, 24200);
    for (std::uint32_t bucket = 0; bucket < 200; ++bucket) {
        image.bucketLinks[bucket].value = 900 + bucket % 100;
    }
    open();
    lookAhead(1000);
}

TEST_F(ChainPrefetchTest, SlotsOfSizeZeroAreNotLookedAt)
{
    image.buckets(200);
    image.slotsHeader.slotSize = 0;
    image.slotsHeader.mappedCount = 5;
    image.resize(TableFile::slots, 400);
    for (PairImage& link : image.bucketLinks) {
        link.value = 4;
    }
    open();
    lookAhead(0xffffffff);
}

TEST_F(ChainPrefetchTest, ABucketCountThatWrapsIsCutToTheMapping)
{
    image.buckets(3).chain(1, {{0, ""}});
    image.bucketsHeader.numBuckets = 0x20000003;
    open();
    ChainPrefetch prefetch(*buckets, slots->layout(4), 4);
    for (unsigned index = 0; index < 1024; index += 16) {
        prefetch.advance(index);
    }
    prefetch.advance(0xfffffff0);
}

TEST_F(ChainPrefetchTest, WhatWasLookedUpInAnEarlierMappingIsForgotten)
{
    image.buckets(400).slots(400);
    for (std::uint32_t bucket = 0; bucket < 400; ++bucket) {
        image.chain(bucket, {{bucket, ""}});
    }
    open();
    ChainPrefetch prefetch(*buckets, slots->layout(4), 4);
    for (unsigned index = 0; index < 100; ++index) {
        prefetch.advance(index);
    }
    ASSERT_EQ(slots->detach(), 0);
    ASSERT_TRUE(slots->attach());
    prefetch.restart(slots->layout(4));
    for (unsigned index = 100; index < 400; ++index) {
        prefetch.advance(index);
    }
}

// A chain longer than the stages, and one that runs in a circle.
TEST_F(ChainPrefetchTest, TheLengthOfAChainDoesNotMatter)
{
    image.buckets(200).chain(
        100, {{0, ""}, {1, ""}, {2, ""}, {3, ""}, {4, ""}, {5, ""}, {6, ""}, {7, ""}});
    image.slotImages[7].next.value = 7;
    image.bucketLinks[150].value = 7;
    open();
    lookAhead(4);
}

}  // namespace
