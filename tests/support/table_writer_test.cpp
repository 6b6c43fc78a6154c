#include "support/table_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "support/store_recorder.h"
#include "support/table_checks.h"
#include "support/table_files.h"
#include "support/writer_of_twelve_bytes.h"

namespace {

using namespace QuaskTesting;
using testing::ElementsAre;

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

TEST_F(WriterOfTwelveBytes, UpdateKeepsTheOldValueInTheLookasideSlotUntilItsEnd)
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
