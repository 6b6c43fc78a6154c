#include <gtest/gtest.h>

#include "interleave/memories.h"
#include "interleave/operation_name.h"
#include "interleave/scenario.h"

// Walks during the work of a writer that may do its next store before any load, and on a machine
// that may show it the stores in any order that the language allows.
namespace {

using namespace QuaskTesting;

class WalkBeside : public testing::TestWithParam<Operation>
{
protected:
    // Walks during the operation, alone and followed by any other.
    template <typename Memory, typename Walk = ByChainWalk<>>
    Exploration walkBesideSinglesAndPairs()
    {
        Exploration all;
        forSinglesAndPairs(GetParam(), [&](Scenario& scenario, std::string const& name) {
            Exploration const result = scenario.walk<Memory, Walk>();
            EXPECT_EQ(result.violation, "") << name;
            all += result;
        });
        report(all);
        return all;
    }

    // The same in batches: some are good, and some are not.
    template <typename Memory>
    void walkInBatchesBesideSinglesAndPairs()
    {
        Exploration const all = walkBesideSinglesAndPairs<Memory, InBatches<>>();
        EXPECT_GT(all.batches, 0u);
        EXPECT_LT(all.batches, all.executions);
        EXPECT_GT(all.lookasideHits, 0u);
        EXPECT_GT(all.remaps, 0u);
    }
};

TEST_P(WalkBeside, FindsWhatWasThereInEveryInterleaving)
{
    Exploration const all = walkBesideSinglesAndPairs<InterleavedMemory>();
    EXPECT_GT(all.restarts, 0u);
    EXPECT_GT(all.lookasideHits, 0u);
    EXPECT_GT(all.remaps, 0u);
}

TEST_P(WalkBeside, FindsWhatWasThereHoweverWeaklyOrdered)
{
    Exploration const all = walkBesideSinglesAndPairs<WeaklyOrderedMemory>();
    EXPECT_GT(all.restarts, 0u);
    EXPECT_GT(all.lookasideHits, 0u);
    EXPECT_GT(all.remaps, 0u);
}

TEST_P(WalkBeside, FindsTheSameInBatchesInEveryInterleaving)
{
    walkInBatchesBesideSinglesAndPairs<InterleavedMemory>();
}

TEST_P(WalkBeside, FindsTheSameInBatchesHoweverWeaklyOrdered)
{
    walkInBatchesBesideSinglesAndPairs<WeaklyOrderedMemory>();
}

INSTANTIATE_TEST_SUITE_P(Operations, WalkBeside, testing::ValuesIn(allOperations()), testName);

template <typename Memory>
class Walk : public testing::Test
{};

TYPED_TEST_SUITE(Walk, BothMemories, MemoryNames);

// The words of a value are of 8, 4 and 1 bytes; a value of 13 bytes has all three.
TYPED_TEST(Walk, FindsValuesOfAnySizeWhole)
{
    Exploration all;
    for (std::uint32_t const valueSize : {8u, 12u, 13u, 24u}) {
        SmallTable::Shape shape;
        shape.valueSize = valueSize;
        for (Operation const& first : allOperations()) {
            Scenario single(shape, {first});
            all += single.walk<TypeParam>();
            all += single.walk<TypeParam, InBatches<>>();
        }
        Operation const update = {"", [](SmallTable& table) { return table.update(2); }};
        Scenario sameSlot(shape, {update, update});
        all += sameSlot.walk<TypeParam>();
        all += sameSlot.walk<TypeParam, InBatches<>>();
    }
    EXPECT_EQ(all.violation, "");
    EXPECT_GT(all.lookasideHits, 0u);
    EXPECT_GT(all.batches, 0u);
    report(all);
}

// The slot file fills its page: growth by one slot moves the reader's mapping, and with it the
// links that it stands on.
TYPED_TEST(Walk, GoesOnInAMappingThatMoved)
{
    SmallTable::Shape shape;
    shape.freeSlots = 0;
    shape.others = 116;
    Operation const grow = {"", [](SmallTable& table) { return table.grow(1); }};
    Exploration all;
    for (Operation const& other : allOperations()) {
        for (auto const& operations : {std::vector{grow, other}, std::vector{other, grow}}) {
            Scenario scenario(shape, operations);
            if (scenario.isPossible()) {
                Exploration result = scenario.walk<TypeParam>();
                result += scenario.walk<TypeParam, InBatches<>>();
                EXPECT_EQ(result.violation, "") << other.name;
                all += result;
            }
        }
    }
    EXPECT_GT(all.movedRemaps, 0u);
    EXPECT_GT(all.batches, 0u);
    report(all);
}

// On tables with and without a free slot, and on one whose growth needs another page, which the
// setup may have looked for before it was there.
TYPED_TEST(Walk, MayBeginWithTheSetupWhileTheTableChanges)
{
    Exploration all;
    for (SmallTable::Shape const& shape : {SmallTable::Shape{16, 0, 0}, SmallTable::Shape{16, 1, 0},
                                           SmallTable::Shape{16, 0, 116}}) {
        for (Operation const& operation : allOperations()) {
            Scenario scenario(shape, {operation});
            Exploration result = scenario.setUpAndWalk<TypeParam>();
            result += scenario.setUpAndWalk<TypeParam, InBatches<>>();
            EXPECT_EQ(result.violation, "") << operation.name;
            all += result;
        }
    }
    report(all);
}

}  // namespace
