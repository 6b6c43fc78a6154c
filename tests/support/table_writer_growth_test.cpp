// How the writer's table grows.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "support/store_recorder.h"
#include "support/table_checks.h"
#include "support/table_files.h"
#include "support/writer_of_twelve_bytes.h"

namespace {

using namespace QuaskTesting;
using testing::ElementsAre;

TEST_F(WriterOfTwelveBytes, NewSlotsComeAfterThoseThatAreFree)
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

TEST_F(WriterOfTwelveBytes, TheHeaderIsValidAtEveryMoment)
{
    auto const expectValid = [&](auto&& operation) {
        StoreReplay replay(directory);
        auto const steps = storesOf(writer, operation);
        replay.restore();
        for (StoreStep const& step : steps) {
            replay.apply(step);
            EXPECT_TRUE(hasValidHeader(replay.contents(TableFile::slots))) << "after " << step;
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

}  // namespace
