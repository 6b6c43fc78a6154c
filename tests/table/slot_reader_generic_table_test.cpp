#include "table/slot_reader_generic_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/private_root.h"
#include "support/recording_handler.h"
#include "support/table_files.h"
#include "support/unreadable_file.h"

namespace {

using namespace QuaskTesting;
using Quask::SlotReaderGenericTable;
using testing::ElementsAre;
using testing::IsEmpty;

class SlotReaderTest : public testing::Test
{
protected:
    bool attach()
    {
        image.writeTo(root, "eq");
        return table.attach();
    }

    std::size_t offsetInMapping(void const* address) const
    {
        return static_cast<std::size_t>(static_cast<char const*>(address) -
                                        reinterpret_cast<char const*>(&table.liveHeader()));
    }

    static std::uint32_t word32(void const* address)
    {
        return Mem::Atomics::load32(address, std::memory_order_relaxed);
    }

    PrivateRoot root;
    TableImage image = TableImage::of("std::int64_t", 8).slots(3);
    RecordingHandler handler{0};
    Quask::RootPath rootPath{handler, "eq", false};
    Quask::ReaderStatistics statistics;
    SlotReaderGenericTable table{handler, rootPath, statistics};
    std::string error;
    Quask::ValueFormat format;
};

TEST_F(SlotReaderTest, AMissingFileCannotBeAttached)
{
    EXPECT_FALSE(table.attach());
    EXPECT_THAT(handler.lines, IsEmpty());
}

TEST_F(SlotReaderTest, AnEmptyFileCannotBeAttached)
{
    image.resize(TableFile::slots, 0);
    EXPECT_FALSE(attach());
    EXPECT_THAT(handler.lines, IsEmpty());
}

TEST_F(SlotReaderTest, AFileThatCannotBeOpenedCannotBeAttached)
{
    image.writeTo(root, "eq");
    UnreadableFile const unreadable(root.path() + "/eq/slots");
    EXPECT_FALSE(table.attach());
    EXPECT_THAT(handler.lines, IsEmpty());
}

TEST_F(SlotReaderTest, AttachingTakesTheLayoutFromTheHeader)
{
    ASSERT_TRUE(attach());
    EXPECT_EQ(table.capacity(), 3u);
    EXPECT_EQ(static_cast<Quask::SlotTable<Quask::EmptyValue> const&>(table).capacity(), 3u);
    EXPECT_EQ(table.maximumIndex(), 2u);
    EXPECT_EQ(table.offsetOf(0), 200u);
    EXPECT_EQ(table.offsetOf(2), 248u);
    EXPECT_EQ(table.liveValueSize(), 8u);
    EXPECT_EQ(table.readableSize(), 4096u);
    EXPECT_EQ(table.mappedSize(), 272u);
}

TEST_F(SlotReaderTest, AttachingTakesAnyContents)
{
    image.slotsHeader.magic = "no magic";
    image.slotsHeader.mappedCount = 1000000;
    EXPECT_TRUE(attach());
    EXPECT_EQ(table.capacity(), 1000000u);
    EXPECT_EQ(table.readableSize(), 4096u);
    EXPECT_THAT(handler.lines, IsEmpty());
}

TEST_F(SlotReaderTest, AFileOfOneByteIsReadAsIfZerosFollowed)
{
    image.resize(TableFile::slots, 1);
    ASSERT_TRUE(attach());
    EXPECT_EQ(table.capacity(), 0u);
    EXPECT_FALSE(table.validate(error, format));
    EXPECT_EQ(error, "SlotTable::Header::validate() bad header file size: 1 wanted:200");
}

TEST_F(SlotReaderTest, WithoutSlotsTheHighestIndexIsZeroNotNone)
{
    image.slots(0);
    ASSERT_TRUE(attach());
    EXPECT_EQ(table.capacity(), 0u);
    EXPECT_EQ(table.maximumIndex(), 0u);
    EXPECT_NE(table.slotAt(0, 8), nullptr);
}

TEST_F(SlotReaderTest, ValidatingGivesTheTypeAndTheSizeOfTheValues)
{
    ASSERT_TRUE(attach());
    EXPECT_TRUE(table.validate(error, format));
    EXPECT_EQ(error, "");
    EXPECT_EQ(format.typeName, "std::int64_t");
    EXPECT_EQ(format.size, 8u);
}

TEST_F(SlotReaderTest, ValidatingChecksTheHeaderAndTheFileAsTheyAreNow)
{
    ASSERT_TRUE(attach());
    std::filesystem::resize_file(root.path() + "/eq/slots", 272);
    EXPECT_TRUE(table.validate(error, format));
    std::filesystem::resize_file(root.path() + "/eq/slots", 240);
    EXPECT_FALSE(table.validate(error, format));
    EXPECT_EQ(error, "SlotTable::Header::validate() bad shmem size:240 wanted:272 for 3 slots");
    EXPECT_THAT(handler.lines, ElementsAre("0 " + error));
}

TEST_F(SlotReaderTest, NoStampIsExpectedOfAHeader)
{
    image.slotsHeader.orvik = 0x12345678;
    ASSERT_TRUE(attach());
    EXPECT_TRUE(table.validate(error, format));
}

TEST_F(SlotReaderTest, SlotsComeAfterTheLookasideSlot)
{
    ASSERT_TRUE(attach());
    EXPECT_EQ(offsetInMapping(table.lookasideValue()), 192u);
    EXPECT_EQ(offsetInMapping(table.slotAt(0, 8)), 200u);
    EXPECT_EQ(offsetInMapping(table.slotAt(1, 8)), 224u);
}

TEST_F(SlotReaderTest, ASlotIsFoundUpToTheEndOfTheLastPage)
{
    image.slots(1000);
    image.resize(TableFile::slots, 300);
    ASSERT_TRUE(attach());
    // Slot 161 ends at 4088, after the end of the file.
    EXPECT_EQ(offsetInMapping(table.slotAt(161, 8)), 4064u);
    EXPECT_EQ(word32(table.slotAt(161, 8) + 12), 0u);
    EXPECT_NE(table.slotAt(161, 16), nullptr);
    EXPECT_EQ(table.slotAt(161, 17), nullptr);
    // Of slot 162 only a part of the link is there.
    EXPECT_EQ(table.slotAt(162, 0), nullptr);
    EXPECT_EQ(table.slotAt(0xffffffff, 0), nullptr);
    EXPECT_EQ(table.slotAt(0, 0xffffffff), nullptr);
}

TEST_F(SlotReaderTest, TheLayoutHoldsTheSlotsWhoseFixedWordsAreMapped)
{
    image.slots(1000);
    image.resize(TableFile::slots, 300);
    ASSERT_TRUE(attach());
    Quask::SlotLayout const layout = table.layout(0);
    EXPECT_EQ(layout.reachable, 162u);
    EXPECT_EQ(offsetInMapping(layout.slot(161)), 4064u);
}

TEST_F(SlotReaderTest, TheLayoutEndsWithTheLastSlot)
{
    ASSERT_TRUE(attach());
    EXPECT_EQ(table.layout(0).reachable, 3u);
}

TEST_F(SlotReaderTest, ALayoutWithoutRoomForASlotHoldsNone)
{
    image.slotsHeader.slotSize = 4096 - 176 - 15;
    image.resize(TableFile::slots, 200);
    ASSERT_TRUE(attach());
    EXPECT_EQ(table.layout(0).reachable, 0u);
    EXPECT_EQ(table.slotAt(0, 0), nullptr);
}

TEST_F(SlotReaderTest, TheLayoutHoldsNoSlotsThatAreNotAligned)
{
    image.slotsHeader.slotSize = 28;
    ASSERT_TRUE(attach());
    EXPECT_EQ(offsetInMapping(table.slotAt(1, 8)), 176u + 2 * 28);
    EXPECT_EQ(table.layout(0).reachable, 0u);
}

TEST_F(SlotReaderTest, SlotsOfSizeZeroAllLieAtOnePlace)
{
    image.slotsHeader.slotSize = 0;
    ASSERT_TRUE(attach());
    EXPECT_EQ(offsetInMapping(table.slotAt(0, 8)), 176u);
    EXPECT_EQ(offsetInMapping(table.slotAt(2, 8)), 176u);
    EXPECT_EQ(table.layout(0).reachable, 0u);
}

TEST_F(SlotReaderTest, AFileOfFourGibibytesIsReadToItsEnd)
{
    image.slots(0);
    image.slotsHeader.mappedCount = 178956962;
    image.writeTo(root, "eq");
    std::filesystem::resize_file(root.path() + "/eq/slots", 5000000000);
    ASSERT_TRUE(table.attach());
    ASSERT_TRUE(table.validate(error, format)) << error;
    EXPECT_EQ(table.mappedSize(), 4294967295u);
    EXPECT_EQ(table.readableSize(), 4294967296u);
    ASSERT_EQ(table.offsetOf(178956961), 4294967264u);
    EXPECT_EQ(word32(table.slotAt(178956961, 16) + 4), 0u);
    EXPECT_EQ(table.slotAt(178956962, 8), nullptr);
    EXPECT_EQ(table.layout(0).reachable, 178956962u);
}

TEST_F(SlotReaderTest, DetachingTracesAndForgetsTheMapping)
{
    RecordingHandler tracing(5);
    image.writeTo(root, "eq");
    SlotReaderGenericTable traced(tracing, rootPath, statistics);
    ASSERT_TRUE(traced.attach());
    tracing.lines.clear();
    EXPECT_EQ(traced.detach(), 0);
    EXPECT_THAT(tracing.lines,
                ElementsAre("5 SlotTable::detach()", "5 QuaskMem::detach() localMem: 0 filename: " +
                                                         root.path() + "/eq/slots"));
    EXPECT_TRUE(traced.attach());
}

}  // namespace
