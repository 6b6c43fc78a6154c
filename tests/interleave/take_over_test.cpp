#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "interleave/operation_name.h"
#include "interleave/scenario.h"

// Walks while a writer dies in the middle of an operation, another takes the table over, and goes
// on with an operation of its own.
namespace {

using namespace QuaskTesting;
using testing::HasSubstr;

std::vector<Operation> named(std::vector<std::string> const& names)
{
    std::vector<Operation> operations;
    for (std::string const& name : names) {
        operations.push_back(operationNamed(name));
    }
    return operations;
}

// Those whose deaths leave different things to mend.
std::vector<Operation> const dying =
    named({"insert into A", "insert into B", "update the head of A", "update the middle of A",
           "remove the head of A", "remove the middle of A", "remove the end of A",
           "move the middle of A to B", "take the middle out of A and put it back in front", "grow",
           "grow and insert into A"});

// What touches again what was mended, or lies next to it.
std::vector<Operation> const continuing =
    named({"insert into A", "insert into B", "update the head of A", "update the middle of A",
           "remove the head of A", "remove the middle of A", "move the middle of A to B", "grow"});

class TakeOverBeside : public testing::TestWithParam<Operation>
{
protected:
    // The writer dies before each store of the operation but the first, on tables with and without
    // a free slot. Who takes over does nothing else, or continues.
    template <typename Memory, typename Walk = ByChainWalk<>>
    void expectSoundWalks()
    {
        std::vector<std::vector<Operation>> afterwards{{}};
        for (Operation const& operation : continuing) {
            afterwards.push_back({operation});
        }
        Exploration all;
        unsigned scenarios = 0;
        for (std::uint32_t const freeSlots : {0u, 1u}) {
            SmallTable::Shape shape;
            shape.freeSlots = freeSlots;
            for (std::size_t stores = 1; Scenario(shape, {GetParam(), stores}, {}).isPossible();
                 ++stores) {
                for (auto const& operations : afterwards) {
                    Scenario scenario(shape, {GetParam(), stores}, operations);
                    if (scenario.isPossible()) {
                        Exploration const result = scenario.walk<Memory, Walk>();
                        EXPECT_EQ(result.violation, "")
                            << stores << " stores, then "
                            << (operations.empty() ? "nothing" : operations[0].name);
                        all += result;
                        ++scenarios;
                    }
                }
            }
        }
        std::cout << scenarios << " scenarios, ";
        report(all);
    }
};

TEST_P(TakeOverBeside, LetsTheWalkFindWhatWasThereInEveryInterleaving)
{
    expectSoundWalks<InterleavedMemory>();
}

TEST_P(TakeOverBeside, LetsTheWalkFindWhatWasThereHoweverWeaklyOrdered)
{
    expectSoundWalks<WeaklyOrderedMemory>();
}

TEST_P(TakeOverBeside, LetsAWalkInBatchesFindWhatWasThereInEveryInterleaving)
{
    expectSoundWalks<InterleavedMemory, InBatches<>>();
}

TEST_P(TakeOverBeside, LetsAWalkInBatchesFindWhatWasThereHoweverWeaklyOrdered)
{
    expectSoundWalks<WeaklyOrderedMemory, InBatches<>>();
}

INSTANTIATE_TEST_SUITE_P(Operations, TakeOverBeside, testing::ValuesIn(dying), testName);

// A test of the tests: the writer dies with the first of a value's two words stored, and who takes
// over gives the old value back, but does not release it.
TEST(CarelessTakeOver, ShowsAValueThatIsHalfRewritten)
{
    std::size_t const storesOfTheDead = 5;
    Scenario scenario({}, {operationNamed("update the middle of A"), storesOfTheDead}, {});
    ASSERT_EQ(scenario.stores.size(), storesOfTheDead + 3);
    ASSERT_EQ(scenario.walk<WeaklyOrderedMemory>().violation, "");
    scenario.stores.back().released = false;
    EXPECT_THAT(scenario.walk<WeaklyOrderedMemory>().violation, HasSubstr("but was there never"));
}

}  // namespace
