#include "support/table_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include <unistd.h>

#include "support/private_root.h"
#include "support/store_recorder.h"
#include "support/table_checks.h"
#include "support/table_files.h"

namespace {

using namespace QuaskTesting;
using testing::ElementsAre;

// Values of 12 bytes take a word of 8 and one of 4. A slot has 32 bytes: the lookaside slot at 176,
// slot i at 208 + 32 i.
class WriterOfTwelveBytes : public testing::Test
{
protected:
    static TableShape shape()
    {
        TableShape shape;
        shape.valueType = "char[12]";
        shape.valueSize = 12;
        shape.buckets = 4;
        shape.slots = 3;
        shape.maxSlots = 7;
        return shape;
    }

    // The table as it is made.
    static TableImage newTable()
    {
        auto const pid = static_cast<std::uint32_t>(getpid());
        TableImage image = TableImage::of("char[12]", 12).buckets(4).freeList({0, 1, 2});
        image.bucketsHeader.ownerPid = pid;
        image.bucketsHeader.orvik = 1 << 16 | (pid & 0xffff);
        image.slotsHeader.orvik = image.bucketsHeader.orvik;
        image.vandral1.orvik = image.bucketsHeader.orvik;
        image.vandral2.orvik = image.bucketsHeader.orvik;
        image.slotsHeader.maxSlots = 7;
        image.slotsHeader.mappedVersion = 1;
        for (SlotImage& slot : image.slotImages) {
            slot.next.version = 1;
        }
        return image;
    }

    PrivateRoot root;
    std::string directory = root.path() + "/eq";
    TableWriter writer{directory, shape()};
    TableImage expected = newTable();
};

std::string word(std::uint32_t value)
{
    return std::string(bytesOf(value));
}

std::string pair(std::uint32_t version, std::uint32_t value)
{
    return word(version) + word(value);
}

TEST_F(WriterOfTwelveBytes, MakesATableWithAllSlotsFree)
{
    expectTable(directory, expected);
}

TEST_F(WriterOfTwelveBytes, InsertsAtTheHead)
{
    EXPECT_EQ(writer.insert(2, "first value."), 0u);
    EXPECT_EQ(writer.insert(2, "second value"), 1u);
    expected.bucketLinks[2] = {2, 1};
    expected.slotImages[1] = {{2, 0}, 0xFFFFFFFF, 4, "second value"};
    expected.slotImages[0] = {{2, noSlot}, 0xFFFFFFFF, 4, "first value."};
    expected.slotsHeader.occupiedSlots = 2;
    expected.slotsHeader.freeHead = 2;
    expectTable(directory, expected);
}

TEST_F(WriterOfTwelveBytes, InsertShowsTheElementLast)
{
    writer.insert(2, "first value.");
    EXPECT_THAT(storesOf(writer, [&] { writer.insert(2, "second value"); }),
                ElementsAre(StoreStep{TableFile::slots, 164, word(2)},
                            StoreStep{TableFile::slots, 256, "second v"},
                            StoreStep{TableFile::slots, 264, "alue"},
                            StoreStep{TableFile::slots, 252, word(4)},
                            StoreStep{TableFile::slots, 240, pair(2, 0)},
                            StoreStep{TableFile::buckets, 40, pair(2, 1)},
                            StoreStep{TableFile::slots, 160, word(2)}));
}

TEST_F(WriterOfTwelveBytes, UpdatesInPlace)
{
    writer.insert(2, "first value.");
    writer.insert(0, "second value");
    writer.update(0, "other value.");
    expected.bucketLinks[2] = {1, 0};
    expected.bucketLinks[0] = {1, 1};
    expected.slotImages[0] = {{2, noSlot}, 0xFFFFFFFF, 12, "other value."};
    expected.slotImages[1] = {{2, noSlot}, 0xFFFFFFFF, 4, "second value"};
    expected.lookaside.sequence = 4;
    expected.lookaside.value = "first value.";
    expected.slotsHeader.occupiedSlots = 2;
    expected.slotsHeader.freeHead = 2;
    expectTable(directory, expected);
}

TEST_F(WriterOfTwelveBytes, UpdateKeepsTheOldValueInTheLookasideSlotMeanwhile)
{
    writer.insert(2, "first value.");
    EXPECT_THAT(storesOf(writer, [&] { writer.update(0, "other value."); }),
                ElementsAre(StoreStep{TableFile::slots, 192, "first va"},
                            StoreStep{TableFile::slots, 200, "lue."},
                            StoreStep{TableFile::slots, 188, word(4)},
                            StoreStep{TableFile::slots, 220, word(4 + 4 + 2)},
                            StoreStep{TableFile::slots, 224, "other va"},
                            StoreStep{TableFile::slots, 232, "lue."},
                            StoreStep{TableFile::slots, 220, word(4 + 4 + 4)}));
}

TEST_F(WriterOfTwelveBytes, AReaderIsShownAWholeValueAtEveryMomentOfAnUpdate)
{
    writer.insert(2, "first value.");
    StoreReplay replay(directory);
    auto const steps = storesOf(writer, [&] { writer.update(0, "other value."); });
    replay.restore();
    std::vector<std::string> shown;
    for (StoreStep const& step : steps) {
        replay.apply(step);
        shown.push_back(shownValue(TableImage::load(directory), 0));
    }
    EXPECT_THAT(shown, ElementsAre("first value.", "first value.", "first value.", "first value.",
                                   "first value.", "first value.", "other value."));
}

TEST_F(WriterOfTwelveBytes, RemovesFromTheMiddleOfAChain)
{
    writer.insert(1, "tail of it..");
    writer.insert(1, "middle of it");
    writer.insert(1, "head of it..");
    writer.remove(1, 1);
    expected.bucketLinks[1] = {3, 2};
    expected.slotImages[2] = {{3, 0}, 0xFFFFFFFF, 4, "head of it.."};
    expected.slotImages[0] = {{2, noSlot}, 0xFFFFFFFF, 4, "tail of it.."};
    expected.slotImages[1] = {{3, noSlot}, 0xFFFFFFFF, 4, "middle of it"};
    expected.slotsHeader.occupiedSlots = 2;
    expected.slotsHeader.freeHead = 1;
    expectTable(directory, expected);
}

TEST_F(WriterOfTwelveBytes, RemoveTakesTheSlotOutOfItsChainFirst)
{
    writer.insert(1, "tail of it..");
    writer.insert(1, "head of it..");
    EXPECT_THAT(storesOf(writer, [&] { writer.remove(1, 1); }),
                ElementsAre(StoreStep{TableFile::buckets, 32, pair(3, 0)},
                            StoreStep{TableFile::slots, 240, pair(3, 2)},
                            StoreStep{TableFile::slots, 164, word(1)},
                            StoreStep{TableFile::slots, 160, word(1)}));
}

TEST_F(WriterOfTwelveBytes, AFreedSlotIsTheFirstToBeUsedAgain)
{
    writer.insert(1, "tail of it..");
    writer.insert(1, "head of it..");
    writer.remove(1, 0);
    EXPECT_EQ(writer.insert(3, "another one."), 0u);
    EXPECT_EQ(writer.insert(3, "another two."), 2u);
}

TEST_F(WriterOfTwelveBytes, NewSlotsComeBehindThoseThatAreFree)
{
    writer.insert(2, "first value.");
    EXPECT_THAT(storesOf(writer, [&] { writer.grow(5); }),
                ElementsAre(StoreStep{TableFile::slots, 208 + 32 * 5},
                            StoreStep{TableFile::slots, 304, pair(1, 4)},
                            StoreStep{TableFile::slots, 312, word(0xFFFFFFFF)},
                            StoreStep{TableFile::slots, 336, pair(1, noSlot)},
                            StoreStep{TableFile::slots, 344, word(0xFFFFFFFF)},
                            StoreStep{TableFile::slots, 272, pair(2, 3)},
                            StoreStep{TableFile::slots, 168, pair(2, 5)}));
    expected.bucketLinks[2] = {1, 0};
    expected.slotImages[0] = {{2, noSlot}, 0xFFFFFFFF, 4, "first value."};
    expected.slotImages[2].next = {2, 3};
    expected.slotImages.push_back({{1, 4}});
    expected.slotImages.push_back({{1, noSlot}});
    expected.slotsHeader.occupiedSlots = 1;
    expected.slotsHeader.freeHead = 1;
    expected.slotsHeader.mappedVersion = 2;
    expectTable(directory, expected);
}

TEST_F(WriterOfTwelveBytes, WithoutFreeSlotsTheNewOnesAreFreeOnlyWhenTheyCount)
{
    for (int i = 0; i < 3; ++i) {
        writer.insert(2, "some value..");
    }
    EXPECT_THAT(storesOf(writer, [&] { writer.grow(5); }),
                ElementsAre(StoreStep{TableFile::slots, 208 + 32 * 5},
                            StoreStep{TableFile::slots, 304, pair(1, 4)},
                            StoreStep{TableFile::slots, 312, word(0xFFFFFFFF)},
                            StoreStep{TableFile::slots, 336, pair(1, noSlot)},
                            StoreStep{TableFile::slots, 344, word(0xFFFFFFFF)},
                            StoreStep{TableFile::slots, 168, pair(2, 5)},
                            StoreStep{TableFile::slots, 164, word(3)}));
}

TEST_F(WriterOfTwelveBytes, ATableDoublesWhenNoSlotIsFreeUntilItIsFull)
{
    std::vector<std::uint32_t> counts;
    for (int i = 0; i < 7; ++i) {
        writer.insert(0, "some value..");
        counts.push_back(writer.slots());
    }
    EXPECT_THAT(counts, ElementsAre(3, 3, 3, 6, 6, 6, 7));
    EXPECT_THROW(writer.insert(0, "some value.."), std::length_error);
    EXPECT_THROW(writer.grow(8), std::length_error);
    EXPECT_EQ(writer.occupiedSlots(), 7u);
}

TEST_F(WriterOfTwelveBytes, NeverShrinks)
{
    EXPECT_THAT(storesOf(writer, [&] { writer.grow(2); }), ElementsAre());
    EXPECT_EQ(writer.slots(), 3u);
}

TEST_F(WriterOfTwelveBytes, RefusesWhatTheTableDoesNotHave)
{
    writer.insert(2, "first value.");
    auto const stores = storesOf(writer, [&] {
        EXPECT_THROW(writer.insert(4, "first value."), std::out_of_range);
        EXPECT_THROW(writer.insert(3, "too short"), std::invalid_argument);
        EXPECT_THROW(writer.update(3, "first value."), std::out_of_range);
        EXPECT_THROW(writer.update(0, "much too long a value"), std::invalid_argument);
        EXPECT_THROW(writer.remove(3, 0), std::invalid_argument);
        EXPECT_THROW(writer.remove(2, 3), std::out_of_range);
        EXPECT_THROW(writer.remove(4, 0), std::out_of_range);
    });
    EXPECT_THAT(stores, ElementsAre());
}

TEST_F(WriterOfTwelveBytes, TheHeaderIsValidAtEveryMoment)
{
    auto const expectValid = [&](auto&& operation) {
        StoreReplay replay(directory);
        auto const steps = storesOf(writer, operation);
        replay.restore();
        for (StoreStep const& step : steps) {
            replay.apply(step);
            EXPECT_TRUE(hasValidHeader(replay.contents(TableFile::slots))) << "behind " << step;
        }
    };
    expectValid([&] { writer.grow(4); });
    expectValid([&] { writer.insert(0, "some value.."); });
    expectValid([&] { writer.insert(0, "some value.."); });
    expectValid([&] { writer.insert(0, "some value.."); });
    expectValid([&] { writer.insert(0, "some value.."); });
    expectValid([&] { writer.grow(5); });
    expectValid([&] { writer.remove(0, 3); });
    expectValid([&] { writer.insert(0, "some value.."); });
    expectValid([&] { writer.insert(0, "some value.."); });
    expectValid([&] { writer.insert(0, "some value.."); });
    EXPECT_EQ(writer.slots(), 7u);
}

TEST_F(WriterOfTwelveBytes, ANewTableInThePlaceOfAnotherLeavesTheOldFilesAlone)
{
    writer.insert(2, "first value.");
    TableWriter second(directory, shape());
    writer.update(0, "other value.");
    expectTable(directory, expected);
}

TEST_F(WriterOfTwelveBytes, EachStepOfAVandralHeaderIsOneWordAndANotification)
{
    auto const stores = storesOf(writer, [&] {
        writer.setMinSequence(0x100000002);
        writer.setNumReaders(3);
        writer.setCurrentTable(1);
        writer.notify();
    });
    EXPECT_THAT(stores, ElementsAre(StoreStep{TableFile::vandral1, 16, pair(2, 1)},
                                    StoreStep{TableFile::vandral1, 40, pair(1, 1)},
                                    StoreStep{TableFile::vandral1, 24, word(3)},
                                    StoreStep{TableFile::vandral1, 40, pair(2, 2)},
                                    StoreStep{TableFile::vandral1, 32, pair(1, 1)},
                                    StoreStep{TableFile::vandral1, 40, pair(3, 3)},
                                    StoreStep{TableFile::vandral1, 40, pair(4, 4)}));
    expected.vandral1.minSequence = 0x100000002;
    expected.vandral1.numReaders = 3;
    expected.vandral1.currentTable = {1, 1};
    expected.vandral1.notifications = {4, 4};
    expectTable(directory, expected);
}

TEST_F(WriterOfTwelveBytes, EachStepOfTheSlotHeaderIsOneWordAndAVersion)
{
    auto const stores = storesOf(writer, [&] {
        writer.setSlotsOrvik(5);
        writer.setLookasideWord(6);
    });
    EXPECT_THAT(stores, ElementsAre(StoreStep{TableFile::slots, 12, word(5)},
                                    StoreStep{TableFile::slots, 168, pair(2, 3)},
                                    StoreStep{TableFile::slots, 184, word(6)},
                                    StoreStep{TableFile::slots, 168, pair(3, 3)}));
    expected.slotsHeader.orvik = 5;
    expected.lookaside.writersWord = 6;
    expected.slotsHeader.mappedVersion = 3;
    expectTable(directory, expected);
}

TEST_F(WriterOfTwelveBytes, GoesOnFromAnEarlierStateOfTheFiles)
{
    writer.insert(2, "first value.");
    StoreReplay replay(directory);
    writer.insert(2, "second value");
    writer.grow(7);
    replay.restore();
    EXPECT_EQ(writer.slots(), 3u);
    EXPECT_EQ(writer.insert(1, "third value."), 1u);
    TableImage const table = TableImage::load(directory);
    expectSoundLists(table);
    EXPECT_THAT(shownValues(table), ElementsAre(ElementsAre(), ElementsAre("third value."),
                                                ElementsAre("first value."), ElementsAre()));
}

}  // namespace
