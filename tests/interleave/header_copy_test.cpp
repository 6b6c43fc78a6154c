#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "interleave/header_copies.h"
#include "interleave/memories.h"
#include "support/proving_headers.h"

// Copies of headers during the work of a writer that may do its next store before any load, and on
// a machine that may show it the stores in any order that the language allows.
namespace {

using namespace QuaskTesting;
using testing::HasSubstr;

Operation const rewriteVandralHeader = {
    "", [](SmallTable& table) { return table.rewriteVandralHeader(); }};
Operation const& rewriteSlotHeader()
{
    return operationNamed("rewrite the slot header");
}
Operation const& grow()
{
    return operationNamed("grow");
}

template <typename Memory>
class HeaderCopy : public testing::Test
{
protected:
    // Copies the vandral header during these operations.
    static Exploration ofVandral(std::vector<Operation> const& operations)
    {
        Scenario scenario({}, operations);
        return scenario.template exploreAll<Memory>([](ScheduledMemory& memory, Exploration&) {
            return copyVandralHeader(memory, isOfOneMoment);
        });
    }

    // The same for the slot header, whose copy has to pass `check`.
    template <typename Check>
    static Exploration ofSlots(std::vector<Operation> const& operations, Check const& check)
    {
        Scenario scenario({}, operations);
        return scenario.template exploreAll<Memory>(
            [&](ScheduledMemory& memory, Exploration&) { return copySlotHeader(memory, check); });
    }
};

TYPED_TEST_SUITE(HeaderCopy, BothMemories, MemoryNames);

TYPED_TEST(HeaderCopy, ShowsAVandralHeaderOfOneMoment)
{
    Operation const oneStepMore = {"", [](SmallTable& table) {
                                       table.writer().setMinSequence(2);
                                       return true;
                                   }};
    Exploration all;
    all += this->ofVandral({rewriteVandralHeader});
    all += this->ofVandral({rewriteVandralHeader, oneStepMore});
    EXPECT_EQ(all.violation, "");
    EXPECT_GT(all.executions, 2u);
    report(all);
}

// With a free slot: growth stores nothing then that has no version.
TYPED_TEST(HeaderCopy, ShowsASlotHeaderOfOneMomentWhileItIsRewrittenAndTheTableGrows)
{
    Exploration all;
    for (auto const& operations :
         {std::vector{rewriteSlotHeader()}, std::vector{grow()},
          std::vector{rewriteSlotHeader(), rewriteSlotHeader()}, std::vector{grow(), grow()},
          std::vector{rewriteSlotHeader(), grow()}, std::vector{grow(), rewriteSlotHeader()}}) {
        all += this->ofSlots(operations, isOfOneMoment);
    }
    EXPECT_EQ(all.violation, "");
    EXPECT_GT(all.executions, 6u);
    report(all);
}

// The number of elements and the head of the free list change with every element, and without a
// version: a copy that has them from different moments still passes the checks.
TYPED_TEST(HeaderCopy, ShowsASlotHeaderThatPassesItsChecksWhateverIsDone)
{
    auto const passesItsChecks = [](ScheduledMemory const& memory, auto const& copy) {
        RecordingHandler handler(-1);
        std::string error;
        auto const fileSize = memory.history().contents(TableFile::slots, memory.history().last());
        copy.validate(handler, static_cast<unsigned>(fileSize.size()), 0, error);
        return error;
    };
    Exploration all;
    for (Operation const& first : allOperations()) {
        forSinglesAndPairs(first, [&](Scenario& scenario, std::string const& name) {
            Exploration const result =
                scenario.template exploreAll<TypeParam>([&](ScheduledMemory& memory, Exploration&) {
                    return copySlotHeader(memory, passesItsChecks);
                });
            EXPECT_EQ(result.violation, "") << name;
            all += result;
        });
    }
    report(all);
}

// Tests of the tests: headers whose writer breaks the protocol give copies that never were. The
// recorded stores are then changed.
template <typename Memory>
std::string violationBesideVandralWriter(void (*change)(std::vector<StoreStep>&))
{
    Scenario scenario({}, {rewriteVandralHeader});
    change(scenario.stores);
    return scenario
        .exploreAll<Memory>([](ScheduledMemory& memory, Exploration&) {
            return copyVandralHeader(memory, isOfOneMoment);
        })
        .violation;
}

bool isNotification(StoreStep const& step)
{
    return step.offset == VandralOffset::notifications;
}

TEST(VandralHeader, IsMixedWithoutANotificationBetweenItsSteps)
{
    auto const notifyOnce = [](std::vector<StoreStep>& stores) {
        auto const last = stores.back();
        stores.erase(std::remove_if(stores.begin(), stores.end(), isNotification), stores.end());
        stores.push_back(last);
    };
    EXPECT_THAT(violationBesideVandralWriter<InterleavedMemory>(notifyOnce),
                HasSubstr("was the header never"));
}

TEST(VandralHeader, IsMixedWhenItsStepsAreNotReleased)
{
    auto const relaxSteps = [](std::vector<StoreStep>& stores) {
        for (StoreStep& store : stores) {
            store.released = isNotification(store);
        }
    };
    EXPECT_EQ(violationBesideVandralWriter<InterleavedMemory>(relaxSteps), "");
    EXPECT_THAT(violationBesideVandralWriter<WeaklyOrderedMemory>(relaxSteps),
                HasSubstr("was the header never"));
}

TEST(VandralHeader, IsMixedWhenItsNotificationsAreNotReleased)
{
    auto const relaxNotifications = [](std::vector<StoreStep>& stores) {
        for (StoreStep& store : stores) {
            store.released = !isNotification(store);
        }
    };
    EXPECT_THAT(violationBesideVandralWriter<WeaklyOrderedMemory>(relaxNotifications),
                HasSubstr("was the header never"));
}

// The same for the slot header, where the two words that are rewritten lie at its ends.
TEST(SlotHeader, IsMixedWhenItsStepsAreNotReleased)
{
    Scenario scenario({}, {rewriteSlotHeader()});
    for (StoreStep& store : scenario.stores) {
        store.released = store.offset == SlotsOffset::mappedSlots;
    }
    EXPECT_THAT(scenario
                    .exploreAll<WeaklyOrderedMemory>([](ScheduledMemory& memory, Exploration&) {
                        return copySlotHeader(memory, isOfOneMoment);
                    })
                    .violation,
                HasSubstr("was the header never"));
}

TEST(SlotHeader, NamesAFreeSlotThatDoesNotCountYetWhenItsHeadIsNotReleased)
{
    SmallTable::Shape shape;
    shape.freeSlots = 0;
    Scenario scenario(shape, {grow()});
    ASSERT_EQ(scenario.stores.back().offset, SlotsOffset::freeHead);
    scenario.stores.back().released = false;
    EXPECT_THAT(scenario
                    .exploreAll<WeaklyOrderedMemory>([](ScheduledMemory& memory, Exploration&) {
                        return copySlotHeader(memory, isOfOneMoment);
                    })
                    .violation,
                HasSubstr("was the header never"));
}

// And a reader that lacks one of its orders.
std::string violationOfCopyWithout(LostOrders const& lost)
{
    Scenario scenario({}, {rewriteVandralHeader});
    return scenario
        .exploreAll<WeaklyOrderedMemory>(
            [](ScheduledMemory& memory, Exploration&) {
                return copyVandralHeader(memory, isOfOneMoment);
            },
            lost)
        .violation;
}

TEST(HeaderCopyWithoutItsAcquireLoad, MixesTwoMoments)
{
    LostOrders lost;
    lost.acquireOfLinks = true;
    EXPECT_THAT(violationOfCopyWithout(lost), HasSubstr("was the header"));
}

TEST(HeaderCopyWithoutItsFence, MixesTwoMoments)
{
    LostOrders lost;
    lost.acquireFences = true;
    EXPECT_THAT(violationOfCopyWithout(lost), HasSubstr("was the header never"));
}

}  // namespace
