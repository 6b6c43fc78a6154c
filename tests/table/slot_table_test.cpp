#include "table/slot_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/aligned_bytes.h"
#include "support/recording_handler.h"
#include "support/table_files.h"
#include "support/util.h"

namespace {

using namespace QuaskTesting;
using Header = Quask::SlotTable<Quask::EmptyValue>::Header;
using testing::ElementsAre;
using testing::IsEmpty;

class SlotHeaderTest : public testing::Test
{
protected:
    // Whether the header of `image` fits a file of this size; what it lacks is in `error`.
    bool validate(unsigned fileSize, unsigned expectedOrvik = 0)
    {
        AlignedBytes const live(image.slotsFile());
        return Header(live.as<Header>()).validate(handler, fileSize, expectedOrvik, error);
    }

    bool validate() { return validate(static_cast<unsigned>(image.slotsFile().size())); }

    // That it does not, for this reason.
    void expectFailure(std::string const& reason, unsigned fileSize, unsigned expectedOrvik = 0)
    {
        error = "of an earlier check";
        handler.lines.clear();
        EXPECT_FALSE(validate(fileSize, expectedOrvik));
        EXPECT_EQ(error, reason);
        EXPECT_THAT(handler.lines, ElementsAre("0 " + reason));
    }

    // Has the header's mappedSlots say so without there being slots.
    void setCount(std::uint32_t count) { image.slotsHeader.mappedCount = count; }

    TableImage image = TableImage::of("std::int32_t", 4);
    RecordingHandler handler;
    std::string error;
};

TEST_F(SlotHeaderTest, CopiesEveryField)
{
    SlotsHeaderImage& header = image.slotsHeader;
    header.valueType = "char[12]";
    header.classType = "Names";
    header.valueSize = 12;
    header.slotSize = 32;
    header.maxSlots = 3;
    header.hash = 4;
    header.occupiedSlots = 5;
    header.freeHead = 6;
    header.mappedVersion = 7;
    header.mappedCount = 8;
    header.orvik = 9;
    image.lookaside = {{10, 11}, 12, 13, "fourteen"};
    AlignedBytes const live(image.slotsFile());
    Header const copy(live.as<Header>());
    EXPECT_EQ(copy.magic, 0x544c534b53415551u);
    EXPECT_EQ(copy.version, 4u);
    EXPECT_EQ(copy.orvik, 9u);
    EXPECT_EQ(copy.textOf(copy.valueType), "char[12]");
    EXPECT_EQ(copy.textOf(copy.classType), "Names");
    EXPECT_EQ(copy.valueSize, 12u);
    EXPECT_EQ(copy.slotSize, 32u);
    EXPECT_EQ(copy.maxSlots, 3u);
    EXPECT_EQ(copy.hash, 4u);
    EXPECT_EQ(copy.occupiedSlots, 5u);
    EXPECT_EQ(copy.freeHead, 6u);
    EXPECT_EQ(copy.mappedSlots.version, 7u);
    EXPECT_EQ(copy.mappedSlots.value, 8u);
    EXPECT_EQ(copy.lookaside.next.version, 10u);
    EXPECT_EQ(copy.lookaside.next.index, 11u);
    EXPECT_EQ(copy.lookaside.writerWord, 12u);
    EXPECT_EQ(copy.lookaside.sequence, 13u);
    EXPECT_EQ(std::string_view(reinterpret_cast<char const*>(&copy) + 192, 8), "fourteen");
}

TEST_F(SlotHeaderTest, AFileOfTheSizeItNeedsOrLongerPasses)
{
    image.slots(5).freeList({4, 1});
    image.slotsHeader.occupiedSlots = 5;
    EXPECT_TRUE(validate(320));
    EXPECT_TRUE(validate(321));
    EXPECT_TRUE(validate(0xffffffff));
    EXPECT_EQ(error, "");
    EXPECT_THAT(handler.lines, IsEmpty());
}

TEST_F(SlotHeaderTest, AFileWithoutSlotsIsItsHeader)
{
    EXPECT_TRUE(validate(200));
}

TEST_F(SlotHeaderTest, AFileShorterThanAHeaderFails)
{
    expectFailure("SlotTable::Header::validate() bad header file size: 199 wanted:200", 199);
    expectFailure("SlotTable::Header::validate() bad header file size: 0 wanted:200", 0);
}

TEST_F(SlotHeaderTest, AnotherMagicFailsAndIsShownInHexadecimal)
{
    image.slotsHeader.magic = "QUASKBKT";
    expectFailure("SlotTable::Header::validate() bad magic: 544b424b53415551", 200);
    image.slotsHeader.magic = "";
    expectFailure("SlotTable::Header::validate() bad magic: 0", 200);
}

TEST_F(SlotHeaderTest, AnotherVersionFails)
{
    image.slotsHeader.version = 3;
    expectFailure("SlotTable::Header::validate() bad version: 3", 200);
    image.slotsHeader.version = 16;
    expectFailure("SlotTable::Header::validate() bad version: 16", 200);
}

TEST_F(SlotHeaderTest, AnExpectedStampIsComparedAndShownInHexadecimal)
{
    image.slotsHeader.orvik = 0xabc;
    EXPECT_TRUE(validate(200, 0xabc));
    expectFailure("SlotTable::validate() bad orvik:abc wanted:1f", 200, 31);
}

TEST_F(SlotHeaderTest, WithoutAnExpectationEveryStampPasses)
{
    image.slotsHeader.orvik = 0xffffffff;
    EXPECT_TRUE(validate(200, 0));
}

TEST_F(SlotHeaderTest, TheChecksumIsThatOfTheDescriptiveFields)
{
    image.slotsHeader.valueType = "char[12]";
    image.slotsHeader.valueSize = 12;
    AlignedBytes const live(image.slotsFile());
    Header const copy(live.as<Header>());
    std::string const file = image.slotsFile();
    EXPECT_EQ(copy.checksum(), Quask::Util::hash(&file[16], 64) + Quask::Util::hash(&file[80], 64) +
                                   Quask::Util::hash(&file[144], 4) +
                                   Quask::Util::hash(&file[148], 4) +
                                   Quask::Util::hash(&file[152], 4));
}

TEST_F(SlotHeaderTest, AnotherChecksumFailsAndBothAreShownInHexadecimal)
{
    std::uint32_t const computed = image.checksum();
    std::ostringstream expected;
    expected << "SlotTable::Header::validate() checksum fail: " << std::hex << computed << " != 1f";
    image.slotsHeader.hash = 31;
    expectFailure(expected.str(), 200);
}

// The whole field counts, also after the name's end.
TEST_F(SlotHeaderTest, AChangeOfAnyDescriptiveFieldFailsTheChecksum)
{
    ASSERT_TRUE(validate());
    std::string const sound = image.slotsFile();
    for (unsigned const offset : {16u, 79u, 80u, 143u, 144u, 147u, 148u, 152u, 155u}) {
        TableImage changed = image;
        changed.patch(TableFile::slots, offset, "\xa5");
        AlignedBytes const live(changed.slotsFile());
        EXPECT_FALSE(Header(live.as<Header>()).validate(handler, 200, 0, error)) << offset;
        EXPECT_EQ(error.find("SlotTable::Header::validate() checksum fail: "), 0u) << error;
    }
}

TEST_F(SlotHeaderTest, MoreOccupiedSlotsThanThereAreFail)
{
    setCount(3);
    image.slotsHeader.occupiedSlots = 3;
    EXPECT_TRUE(validate(1000));
    image.slotsHeader.occupiedSlots = 4;
    expectFailure("SlotTable::Header::validate() bad occupiedSlots: 4 num slots: 3", 1000);
}

TEST_F(SlotHeaderTest, AFreeListThatBeginsAfterTheLastSlotFails)
{
    setCount(3);
    image.slotsHeader.freeHead = 2;
    EXPECT_TRUE(validate(1000));
    image.slotsHeader.freeHead = 3;
    expectFailure("SlotTable::Header::validate() bad freeSlots: 3 slots: 3", 1000);
    image.slotsHeader.freeHead = 0xfffffffe;
    expectFailure("SlotTable::Header::validate() bad freeSlots: 4294967294 slots: 3", 1000);
}

TEST_F(SlotHeaderTest, AnEmptyFreeListPassesWhateverTheCount)
{
    for (std::uint32_t const count : {0u, 1u, 0xffffffffu}) {
        setCount(count);
        EXPECT_TRUE(validate(0xffffffff)) << count;
    }
}

TEST_F(SlotHeaderTest, AFileTooShortForTheSmallestSlotsFails)
{
    setCount(10);
    EXPECT_TRUE(validate(440));
    expectFailure("SlotTable::Header::validate() bad shmem size:439 wanted:440 for 10 slots", 439);
}

// Longer slots do not fit then; the walk or the next growth meets the short file.
TEST_F(SlotHeaderTest, TheSizeOfTheTablesOwnSlotsDoesNotCount)
{
    image = TableImage::of("char[1000]", 1000);
    setCount(10);
    EXPECT_TRUE(validate(440));
}

TEST_F(SlotHeaderTest, TheSizeThatSlotsNeedWrapsAt32Bits)
{
    setCount(0x0aaaaaab);  // 24 times this is 2^32 + 8
    EXPECT_TRUE(validate(208));
    expectFailure("SlotTable::Header::validate() bad shmem size:207 wanted:208 for 178956971 slots",
                  207);
    setCount(0xffffffff);
    EXPECT_TRUE(validate(200));
}

TEST_F(SlotHeaderTest, TheFirstCheckThatFailsIsReported)
{
    image.slotsHeader.magic = "x";
    image.slotsHeader.version = 5;
    image.slotsHeader.hash = 0;
    image.slotsHeader.occupiedSlots = 9;
    image.slotsHeader.freeHead = 8;
    setCount(7);
    expectFailure("SlotTable::Header::validate() bad header file size: 5 wanted:200", 5, 1);
    expectFailure("SlotTable::Header::validate() bad magic: 78", 200, 1);
    image.slotsHeader.magic = "QUASKSLT";
    expectFailure("SlotTable::Header::validate() bad version: 5", 200, 1);
    image.slotsHeader.version = 4;
    expectFailure("SlotTable::validate() bad orvik:71092 wanted:1", 200, 1);
    EXPECT_FALSE(validate(200));
    EXPECT_EQ(error.find("SlotTable::Header::validate() checksum fail: "), 0u) << error;
    image.slotsHeader.hash.reset();
    expectFailure("SlotTable::Header::validate() bad occupiedSlots: 9 num slots: 7", 200);
    image.slotsHeader.occupiedSlots = 7;
    expectFailure("SlotTable::Header::validate() bad freeSlots: 8 slots: 7", 200);
    image.slotsHeader.freeHead = 6;
    expectFailure("SlotTable::Header::validate() bad shmem size:200 wanted:368 for 7 slots", 200);
}

}  // namespace
