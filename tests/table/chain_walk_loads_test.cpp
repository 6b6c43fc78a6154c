// Slots and links that change between any two loads of a walk: what the handler gets then, and
// what is counted.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/neighbour.h"
#include "table/load_by_load.h"
#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;

class ChainWalkLoadsTest : public WalkFixture
{
protected:
    // What a walk of bucket 0 gave the handler and what it counted.
    struct Outcome
    {
        Lines lines;
        std::uint32_t restarts = 0;
        std::uint32_t lookasideHits = 0;
        std::uint32_t remaps = 0;
        bool operator==(Outcome const&) const = default;
    };

    // Each outcome once, in the order in which they come about when `change` is made before
    // the walk's first load, its second, and so on.
    template <typename Change>
    std::vector<Outcome> outcomes(Change&& change)
    {
        std::vector<Outcome> all;
        for (unsigned when = 1;; ++when) {
            open();
            handler.lines.clear();
            restarts = 0;
            statistics = {};
            bool changed = false;
            {
                LoadByLoad const loads(atLoad(when, [&] {
                    change();
                    changed = true;
                }));
                walk(0, 1);
            }
            if (!changed) {
                return all;
            }
            Outcome const outcome{handler.lines, restarts, statistics.lookasideHits,
                                  statistics.remaps};
            if (all.empty() || all.back() != outcome) {
                all.push_back(outcome);
            }
        }
    }

    // Values of words of 8, 4 and 1 bytes.
    static constexpr std::string_view oldValue = "aaaabbbbccccd";
    static constexpr std::string_view newValue = "eeeeffffggggh";
    std::string const oldLine = "0: slot 0 61616161 62626262 63636363 64";
    std::string const newLine = "0: slot 0 65656565 66666666 67676767 68";

    void makeValues()
    {
        image = TableImage::of("char[13]", 13).buckets(1).chain(0, {{0, oldValue}});
        handler.setSize(13);
    }

    void setSequence(std::uint32_t word)
    {
        liveSlots->store32(offsetOf(0) + RecordOffset::sequence, word);
    }
};

TEST_F(ChainWalkLoadsTest, AHeadThatChangesBetweenItsLoadAndTheCheckIsWalkedAgain)
{
    image.buckets(1).slots(2).chain(0, {{0, bytesOf(10)}});
    image.slotImages[1].value = bytesOf(11);
    std::vector<Outcome> const expected{
        {{"0: slot 1 v1 0b000000", "0: done"}},
        {{"0: restart", "0: slot 1 v1 0b000000", "0: done"}, 1},
    };
    EXPECT_EQ(outcomes([this] { setHead(0, 1); }), expected);
}

TEST_F(ChainWalkLoadsTest, ANextLinkThatChangesBetweenItsLoadAndTheCheckHasItAllWalkedAgain)
{
    image.buckets(1).slots(3).chain(0, {{0, bytesOf(10)}, {1, bytesOf(11)}});
    image.slotImages[2].value = bytesOf(12);
    std::vector<Outcome> const expected{
        {{"0: slot 0 0a000000", "0: slot 2 v1 0c000000", "0: done"}},
        {{"0: slot 0 0a000000", "0: restart", "0: slot 0 0a000000", "0: slot 2 v1 0c000000",
          "0: done"},
         1},
    };
    EXPECT_EQ(outcomes([this] { setNext(0, 2); }), expected);
}

TEST_F(ChainWalkLoadsTest, AValueThatChangesDuringTheCopyIsCopiedAgain)
{
    makeValues();
    std::vector<Outcome> const expected{
        {{newLine + " s4", "0: done"}},
        {{oldLine, "0: done"}},
    };
    EXPECT_EQ(outcomes([this] {
                  setValue(0, newValue);
                  setSequence(4);
              }),
              expected);
}

TEST_F(ChainWalkLoadsTest, ALookasideBitThatAppearsDuringTheCopyLeadsToTheLookasideSlot)
{
    makeValues();
    std::vector<Outcome> const expected{
        {{oldLine + " s6 *", "0: done"}, 0, 1},
        {{oldLine, "0: done"}},
    };
    EXPECT_EQ(outcomes([this] {
                  liveSlots->storeBytes(SlotsOffset::lookaside + RecordOffset::value, oldValue);
                  setSequence(6);
                  setValue(0, "half written.");
              }),
              expected);
}

// The copy from the lookaside slot that is made again counts.
TEST_F(ChainWalkLoadsTest, ALookasideBitThatDisappearsDuringTheCopyLeadsBackToTheSlot)
{
    makeValues();
    image.rewriting(0, oldValue, "half written.");
    std::vector<Outcome> const expected{
        {{newLine + " s4", "0: done"}},
        {{newLine + " s4", "0: done"}, 0, 1},
        {{oldLine + " s2 *", "0: done"}, 0, 1},
    };
    EXPECT_EQ(outcomes([this] {
                  setValue(0, newValue);
                  setSequence(4);
              }),
              expected);
}

TEST_F(ChainWalkLoadsTest, EveryCopyFromTheLookasideSlotCounts)
{
    makeValues();
    image.rewriting(0, oldValue, "half written.");
    std::vector<Outcome> const expected{
        {{newLine + " s6 *", "0: done"}, 0, 1},
        {{newLine + " s6 *", "0: done"}, 0, 2},
        {{oldLine + " s2 *", "0: done"}, 0, 1},
    };
    EXPECT_EQ(outcomes([this] {
                  liveSlots->storeBytes(SlotsOffset::lookaside + RecordOffset::value, newValue);
                  setSequence(6);
              }),
              expected);
}

// Its lookaside hit counts twice then.
TEST_F(ChainWalkLoadsTest, GrowthWhileASlotIsReadHasItReadAgain)
{
    makeValues();
    image.rewriting(0, oldValue, "half written.");
    std::vector<Outcome> const expected{
        {{oldLine + " s2 *", "0: done"}, 0, 2, 1},
        {{oldLine + " s2 *", "0: done"}, 0, 1, 0},
    };
    EXPECT_EQ(outcomes([this] {
                  lengthen(1000);
                  publish(1000);
              }),
              expected);
}

TEST_F(ChainWalkLoadsTest, AFollowedLinkIsCheckedInTheMovedMapping)
{
    image.buckets(1).slots(3).chain(0, {{0, bytesOf(10)}, {1, bytesOf(11)}});
    image.slotImages[2].value = bytesOf(12);
    for (Outcome const& outcome : outcomes([this] {
             Neighbour const taken(reinterpret_cast<char const*>(&slots->liveHeader()) + 4096);
             lengthen(1000);
             publish(1000);
             setNext(0, 2);
         })) {
        ASSERT_GE(outcome.lines.size(), 3u);
        EXPECT_EQ(outcome.lines[outcome.lines.size() - 2], "0: slot 2 v1 0c000000");
    }
}

}  // namespace
