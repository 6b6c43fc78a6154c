#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "interleave/scenario.h"

// A test of the tests: without any one of the walk's checks, they find something wrong.
namespace {

using namespace QuaskTesting;
using testing::HasSubstr;

template <typename Checks>
std::string violationBeside(char const* operation, std::uint32_t freeSlots = 1)
{
    SmallTable::Shape shape;
    shape.freeSlots = freeSlots;
    Scenario scenario(shape, {operationNamed(operation)});
    return scenario.walk<InterleavedMemory, ByChainWalk<Checks>>().violation;
}

struct WithoutLinkVersion : Quask::AllWalkChecks
{
    static constexpr bool linkVersion = false;
};

TEST(WalkWithoutLinkVersion, LeavesTheChain)
{
    EXPECT_THAT(violationBeside<WithoutLinkVersion>("move the middle of A to B"),
                HasSubstr("but was there only before or after"));
    EXPECT_THAT(violationBeside<WithoutLinkVersion>("remove the head of B"),
                HasSubstr("but was there never"));
}

struct WithoutSequence : Quask::AllWalkChecks
{
    static constexpr bool sequence = false;
};

TEST(WalkWithoutSequence, MixesTwoValues)
{
    EXPECT_THAT(violationBeside<WithoutSequence>("update the middle of A"),
                HasSubstr("but was there never"));
}

struct WithoutLookaside : Quask::AllWalkChecks
{
    static constexpr bool lookaside = false;
};

TEST(WalkWithoutLookaside, ReadsAValueThatIsBeingRewritten)
{
    EXPECT_THAT(violationBeside<WithoutLookaside>("update the middle of A"),
                HasSubstr("but was there never"));
}

struct WithoutGrowth : Quask::AllWalkChecks
{
    static constexpr bool growth = false;
};

TEST(WalkWithoutGrowth, TakesANewSlotForCorruption)
{
    EXPECT_THAT(violationBeside<WithoutGrowth>("insert into A", 0),
                HasSubstr("getSlot out-of-range index: 5 max:4"));
}

}  // namespace
