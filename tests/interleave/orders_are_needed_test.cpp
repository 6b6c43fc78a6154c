#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "interleave/scenario.h"
#include "support/table_layout.h"

// Tests of the tests: on a weakly ordered machine the walk goes wrong without any one of the pairs
// of a release and an acquire that shared_store.h lists. The pairs of the headers' words, the last
// of the list, are tested with the header copies. A batch goes wrong without those that it
// relies on: it reads no value from the lookaside slot, and leaves a slot out of reach to the walk.
namespace {

using namespace QuaskTesting;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

// A walk in batches of which only good batches count.
struct BatchesAlone : InBatches<>
{
    static bool run(Quask::QuaskReaderGeneric& reader, Recorder& recorder)
    {
        try {
            InBatches<>::run(reader, recorder);
        } catch (Dovan::Exception const&) {
            return false;
        }
        return recorder.batches() == 1;
    }
};

// Of the walk one by one and of batches.
template <typename... Arguments>
std::vector<std::string> violationsOf(Scenario& scenario, Arguments... arguments)
{
    return {scenario.walk<WeaklyOrderedMemory>(arguments...).violation,
            scenario.walk<WeaklyOrderedMemory, BatchesAlone>(arguments...).violation};
}

// The violations during these operations, of a writer that has lost one order of those stores for
// which `isLost` holds.
std::vector<std::string> violationsBeside(std::vector<Operation> const& operations,
                                          bool StoreStep::*order, bool (*isLost)(StoreStep const&))
{
    Scenario scenario({}, operations);
    EXPECT_THAT(violationsOf(scenario), Each(""));
    bool any = false;
    for (StoreStep& store : scenario.stores) {
        if (store.*order && isLost(store)) {
            store.*order = false;
            any = true;
        }
    }
    EXPECT_TRUE(any) << "no such store";
    return violationsOf(scenario);
}

// Where in a slot's record a store goes; the values are of 16 bytes.
std::uint64_t placeInRecord(StoreStep const& store)
{
    return (store.offset - SlotsOffset::lookaside) % slotSizeFor(16);
}
bool isInSlot(StoreStep const& store)
{
    return store.file == TableFile::slots && store.offset >= SlotsOffset::slot(slotSizeFor(16), 0);
}
bool isInLookaside(StoreStep const& store)
{
    return store.file == TableFile::slots && store.offset >= SlotsOffset::lookaside &&
           !isInSlot(store);
}
bool isSequence(StoreStep const& store)
{
    return isInSlot(store) && placeInRecord(store) == RecordOffset::sequence;
}
bool hasLookasideBit(StoreStep const& store)
{
    return (static_cast<unsigned char>(store.bytes[0]) & lookasideBit) != 0;
}

TEST(WithoutPair1, ANewSlotIsSeenBeforeItsValue)
{
    EXPECT_THAT(violationsBeside({operationNamed("insert into A")}, &StoreStep::released,
                                 [](auto& store) { return store.file == TableFile::buckets; }),
                Each(HasSubstr("but was there never")));
}

TEST(WithoutPair2, TheLookasideSlotIsReadBeforeItHoldsTheValue)
{
    EXPECT_THAT(
        violationsBeside({operationNamed("update the middle of A")}, &StoreStep::released,
                         [](auto& store) { return isSequence(store) && hasLookasideBit(store); }),
        ElementsAre(HasSubstr("but was there never"), ""));
}

TEST(WithoutPair3, AValueThatIsBeingRewrittenPassesForTheOldOne)
{
    EXPECT_THAT(
        violationsBeside({operationNamed("update the middle of A")}, &StoreStep::fenced, isInSlot),
        Each(HasSubstr("but was there never")));
}

TEST(WithoutPair4, AValueThatIsBeingRewrittenPassesForTheNewOne)
{
    EXPECT_THAT(
        violationsBeside({operationNamed("update the middle of A")}, &StoreStep::released,
                         [](auto& store) { return isSequence(store) && !hasLookasideBit(store); }),
        Each(HasSubstr("but was there never")));
}

TEST(WithoutPair5, AnotherSlotsValueIsReadFromTheLookasideSlot)
{
    EXPECT_THAT(violationsBeside({operationNamed("update the middle of A"),
                                  operationNamed("update the head of B")},
                                 &StoreStep::fenced, isInLookaside),
                ElementsAre(HasSubstr("but was there never"), ""));
}

TEST(WithoutPair6, ASlotIsReadThatIsUsedAgain)
{
    EXPECT_THAT(violationsBeside({operationNamed("move the middle of A to B")}, &StoreStep::fenced,
                                 isInSlot),
                Each(HasSubstr("but was there never")));
}

TEST(WithoutPair7, TheFreeListIsTakenForTheChain)
{
    EXPECT_THAT(
        violationsBeside({operationNamed("remove the head of A")}, &StoreStep::released,
                         [](auto& store) { return isInSlot(store) && placeInRecord(store) == 0; }),
        Each(HasSubstr("but was there never")));
}

// The other side of the pairs.
std::vector<std::string> violationsWithout(LostOrders const& lost, char const* operation,
                                           std::uint32_t freeSlots = 1)
{
    SmallTable::Shape shape;
    shape.freeSlots = freeSlots;
    Scenario scenario(shape, {operationNamed(operation)});
    return violationsOf(scenario, lost);
}

TEST(WalkWithoutAcquireOfLinks, TakesANewSlotForCorruption)
{
    LostOrders lost;
    lost.acquireOfLinks = true;
    EXPECT_THAT(violationsWithout(lost, "insert into A", 0),
                ElementsAre(HasSubstr("getSlot out-of-range index: 5 max:4"), ""));
}

TEST(WalkWithoutAcquireOfLinks, TakesTheFreeListForTheChain)
{
    LostOrders lost;
    lost.acquireOfLinks = true;
    EXPECT_THAT(violationsWithout(lost, "remove the head of A"),
                Each(HasSubstr("but was there never")));
}

TEST(WalkWithoutAcquireOfSequences, ReadsAValueOlderThanItsSequence)
{
    LostOrders lost;
    lost.acquireOfSequences = true;
    EXPECT_THAT(violationsWithout(lost, "update the middle of A"),
                Each(HasSubstr("but was there never")));
}

TEST(WalkWithoutItsFence, ReadsAValueNewerThanItsSequence)
{
    LostOrders lost;
    lost.acquireFences = true;
    EXPECT_THAT(violationsWithout(lost, "update the middle of A"),
                Each(HasSubstr("but was there never")));
}

}  // namespace
