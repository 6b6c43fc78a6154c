#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <system_error>

#include <unistd.h>

#include "support/private_root.h"
#include "support/store_recorder.h"
#include "support/table_checks.h"
#include "support/table_writer.h"

namespace {

using namespace QuaskTesting;
using testing::AnyOf;
using testing::ElementsAre;

struct Death
{};

class DiesAfter final : public StoreObserver
{
public:
    explicit DiesAfter(int stores) : left_(stores) {}
    void beforeStore(void*, std::size_t, void const*, std::memory_order) override { live(); }
    void beforeLengthen(std::uint64_t) override { live(); }

private:
    void live()
    {
        if (left_-- == 0) {
            throw Death();
        }
    }

    int left_;
};

// Whether the operation has more stores than these, and so dies after the last of them.
template <typename Operation>
bool diesAfter(int stores, Operation&& operation)
{
    DiesAfter observer(stores);
    ObserveStores const observing(observer);
    try {
        operation();
        return false;
    } catch (Death const&) {
        return true;
    }
}

using Values = std::vector<std::vector<std::string>>;

class TakeOver : public testing::Test
{
protected:
    static TableShape shape()
    {
        TableShape shape;
        shape.valueType = "char[12]";
        shape.valueSize = 12;
        shape.buckets = 2;
        shape.slots = 3;
        shape.maxSlots = 12;
        return shape;
    }

    TakeOver()
    {
        writer.insert(1, "tail of it..");
        writer.insert(1, "head of it..");
    }

    // The table must show the elements as they were before the operation or after it.
    void expectShown(Values const& before, Values const& after) const
    {
        EXPECT_TRUE(hasValidHeader(fileContents(directory, TableFile::slots)));
        EXPECT_THAT(shownValues(TableImage::load(directory)), AnyOf(before, after));
    }

    // And it must be usable to its last slot.
    void expectMended(Values const& before, Values const& after) const
    {
        expectShown(before, after);
        TableImage const table = TableImage::load(directory);
        expectSoundLists(table);
        for (SlotImage const& slot : table.slotImages) {
            EXPECT_EQ(slot.sequence & lookasideBit, 0u);
        }
        TableWriter next(directory);
        while (next.occupiedSlots() < next.maxSlots()) {
            next.insert(0, "filling it..");
        }
        expectSoundLists(TableImage::load(directory));
    }

    // The writer dies before each of the operation's stores and after the last; then the one that
    // takes over dies before each of its own, before a third mends what is left.
    template <typename Operation>
    void dieAtEveryStore(Operation&& operation)
    {
        StoreReplay start(directory);
        Values const before = shownValues(TableImage::load(directory));
        operation();
        Values const after = shownValues(TableImage::load(directory));
        bool died = true;
        for (int stores = 0; died; ++stores) {
            start.restore();
            died = diesAfter(stores, operation);
            expectShown(before, after);
            StoreReplay left(directory);
            bool diedAgain = true;
            for (int moreStores = 0; diedAgain; ++moreStores) {
                SCOPED_TRACE(testing::Message() << stores << " and " << moreStores << " stores");
                left.restore();
                diedAgain = diesAfter(moreStores, [&] { TableWriter second(directory); });
                expectShown(before, after);
                if (diedAgain) {
                    TableWriter third(directory);
                }
                expectMended(before, after);
            }
            deaths += died ? 1 : 0;
        }
    }

    PrivateRoot root;
    std::string directory = root.path() + "/eq";
    TableWriter writer{directory, shape()};
    int deaths = 0;
};

TEST_F(TakeOver, OfASoundTableStoresNothing)
{
    EXPECT_FALSE(diesAfter(0, [&] { TableWriter second(directory); }));
}

TEST_F(TakeOver, FinishesAnUpdate)
{
    dieAtEveryStore([&] { writer.update(0, "other value."); });
    EXPECT_EQ(deaths, 7);
}

TEST_F(TakeOver, GivesASlotThatWasBeingRewrittenItsOldValueBack)
{
    StoreReplay replay(directory);
    auto const steps = storesOf(writer, [&] { writer.update(0, "other value."); });
    replay.restore();
    for (std::size_t i = 0; i < 5; ++i) {
        replay.apply(steps[i]);
    }
    EXPECT_EQ(TableImage::load(directory).slotImages[0].value.substr(0, 12), "other vait..");
    TableWriter second(directory);
    SlotImage const slot = TableImage::load(directory).slotImages[0];
    EXPECT_EQ(slot.value.substr(0, 12), "tail of it..");
    EXPECT_EQ(slot.sequence, 12u);
}

TEST_F(TakeOver, FinishesAnInsertion)
{
    dieAtEveryStore([&] { writer.insert(1, "new one....."); });
    EXPECT_EQ(deaths, 7);
}

TEST_F(TakeOver, FinishesTheRemovalOfAHead)
{
    dieAtEveryStore([&] { writer.remove(1, 1); });
    EXPECT_EQ(deaths, 4);
}

TEST_F(TakeOver, FinishesTheRemovalOfATail)
{
    dieAtEveryStore([&] { writer.remove(1, 0); });
    EXPECT_EQ(deaths, 4);
}

TEST_F(TakeOver, FinishesOrForgetsGrowthAfterFreeSlots)
{
    dieAtEveryStore([&] { writer.grow(5); });
    EXPECT_EQ(deaths, 1 + 2 * 2 + 1 + 1);
}

TEST_F(TakeOver, FinishesOrForgetsGrowthOfAFullTable)
{
    writer.insert(0, "the last one");
    dieAtEveryStore([&] { writer.grow(5); });
    EXPECT_EQ(deaths, 1 + 2 * 2 + 1 + 1);
}

TEST_F(TakeOver, FinishesAnInsertionThatGrowsTheTable)
{
    writer.insert(0, "the last one");
    dieAtEveryStore([&] { writer.insert(0, "one too many"); });
    EXPECT_EQ(deaths, 1 + 2 * 3 + 1 + 1 + 7);
}

TEST_F(TakeOver, MakesTheNewWriterTheOwner)
{
    StoreReplay replay(directory);
    replay.apply({TableFile::buckets, 20, std::string(bytesOf(std::uint32_t(1)))});
    TableWriter second(directory);
    EXPECT_EQ(TableImage::load(directory).bucketsHeader.ownerPid,
              static_cast<std::uint32_t>(getpid()));
}

TEST_F(TakeOver, OfAMissingTableFails)
{
    EXPECT_THROW(TableWriter(root.path() + "/nothing"), std::system_error);
}

TEST_F(TakeOver, OfWhatNoWriterLeavesFails)
{
    auto const expectRefused = [&](StoreStep const& damage) {
        StoreReplay replay(directory);
        replay.apply(damage);
        EXPECT_THROW(TableWriter{directory}, std::runtime_error) << damage;
        replay.restore();
    };
    auto const link = [](std::uint32_t index) { return std::string(bytesOf(packPair(9, index))); };
    expectRefused({TableFile::slots, 208 + 3 * 32 - 8});  // cut short
    expectRefused({TableFile::buckets, 32});              // cut short
    expectRefused({TableFile::slots, 148, "("});          // the size of a slot
    expectRefused({TableFile::buckets, 24, link(1)});     // a slot in two chains
    expectRefused({TableFile::buckets, 24, link(2)});     // a free slot in a chain
    expectRefused({TableFile::buckets, 24, link(3)});     // no slot
    expectRefused({TableFile::slots, 208, link(1)});      // a chain without end
    expectRefused({TableFile::slots, 164, ""});          // no slot is free
    TableWriter second(directory);
}

}  // namespace
