#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "interleave/scenario.h"

// A test of the tests: without any one of the walk's checks, they find something wrong. Those of a
// batch that no interleaving needs are in tests/table/chain_batch_checks_test.cpp.
namespace {

using namespace QuaskTesting;
using testing::HasSubstr;

template <typename Walk>
std::string violationOf(char const* operation, std::uint32_t freeSlots = 1)
{
    SmallTable::Shape shape;
    shape.freeSlots = freeSlots;
    Scenario scenario(shape, {operationNamed(operation)});
    return scenario.walk<InterleavedMemory, Walk>().violation;
}

struct WithoutLinkVersion : Quask::AllWalkChecks
{
    static constexpr bool linkVersion = false;
};

TEST(WalkWithoutLinkVersion, LeavesTheChain)
{
    EXPECT_THAT(violationOf<ByChainWalk<WithoutLinkVersion>>("move the middle of A to B"),
                HasSubstr("but was there only before or after"));
    EXPECT_THAT(violationOf<ByChainWalk<WithoutLinkVersion>>("remove the head of B"),
                HasSubstr("but was there never"));
}

struct WithoutSequence : Quask::AllWalkChecks
{
    static constexpr bool sequence = false;
};

TEST(WalkWithoutSequence, MixesTwoValues)
{
    EXPECT_THAT(violationOf<ByChainWalk<WithoutSequence>>("update the middle of A"),
                HasSubstr("but was there never"));
}

struct WithoutLookaside : Quask::AllWalkChecks
{
    static constexpr bool lookaside = false;
};

TEST(WalkWithoutLookaside, ReadsAValueThatIsBeingRewritten)
{
    EXPECT_THAT(violationOf<ByChainWalk<WithoutLookaside>>("update the middle of A"),
                HasSubstr("but was there never"));
}

struct WithoutGrowth : Quask::AllWalkChecks
{
    static constexpr bool growth = false;
};

TEST(WalkWithoutGrowth, TakesANewSlotForCorruption)
{
    EXPECT_THAT(violationOf<ByChainWalk<WithoutGrowth>>("insert into A", 0),
                HasSubstr("getSlot out-of-range index: 5 max:4"));
}

struct BatchWithoutLinkVersion : Quask::AllWalkChecks
{
    struct Batch : Quask::AllBatchChecks
    {
        static constexpr bool linkVersion = false;
    };
};

TEST(BatchWithoutLinkVersion, LeavesTheChain)
{
    EXPECT_THAT(violationOf<InBatches<BatchWithoutLinkVersion>>("move the middle of A to B"),
                HasSubstr("but was there only before or after"));
    EXPECT_THAT(violationOf<InBatches<BatchWithoutLinkVersion>>("remove the head of B"),
                HasSubstr("but was there only before or after"));
}

struct BatchWithoutSequence : Quask::AllWalkChecks
{
    struct Batch : Quask::AllBatchChecks
    {
        static constexpr bool sequence = false;
    };
};

TEST(BatchWithoutSequence, MixesTwoValues)
{
    EXPECT_THAT(violationOf<InBatches<BatchWithoutSequence>>("update the middle of A"),
                HasSubstr("but was there never"));
}

struct BatchWithoutLookaside : Quask::AllWalkChecks
{
    struct Batch : Quask::AllBatchChecks
    {
        static constexpr bool lookaside = false;
    };
};

TEST(BatchWithoutLookaside, ReadsAValueThatIsBeingRewritten)
{
    EXPECT_THAT(violationOf<InBatches<BatchWithoutLookaside>>("update the middle of A"),
                HasSubstr("but was there never"));
}

}  // namespace
