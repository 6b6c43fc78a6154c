// The growth of a slot file while it is read: SlotReaderGenericTable's setup and doResize().

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "base/exception.h"
#include "support/live_file.h"
#include "support/neighbour.h"
#include "support/private_root.h"
#include "support/recording_handler.h"
#include "support/table_files.h"
#include "support/unreadable_file.h"
#include "table/slot_reader_generic_table.h"

namespace {

using namespace QuaskTesting;
using Quask::CorruptionDetectedException;
using Quask::SlotReaderGenericTable;
using testing::ElementsAre;
using testing::IsEmpty;

class SlotTableGrowthTest : public testing::Test
{
protected:
    // As the writer does: the file first, the count after it.
    void growTo(std::uint32_t count, std::uint32_t version)
    {
        slots.resize(slotsFileSize(image.slotsHeader.slotSize, count));
        publish(count, version);
    }

    void publish(std::uint32_t count, std::uint32_t version)
    {
        slots.store64(SlotsOffset::mappedSlots, packPair(version, count));
    }

    std::size_t offsetInMapping(void const* address) const
    {
        return static_cast<std::size_t>(static_cast<char const*>(address) -
                                        reinterpret_cast<char const*>(&table.liveHeader()));
    }

    PrivateRoot root;
    TableImage image = TableImage::of("std::int64_t", 8).slots(3);
    RecordingHandler handler{0};
    Quask::RootPath rootPath{handler, "eq", false};
    Quask::ReaderStatistics statistics;
    SlotReaderGenericTable table{handler, rootPath, statistics};
    std::string const path = (image.writeTo(root, "eq"), root.path() + "/eq/slots");
    LiveFile slots{path};
};

TEST_F(SlotTableGrowthTest, NothingIsDoneWhileTheVersionStays)
{
    ASSERT_TRUE(table.attach());
    EXPECT_FALSE(table.doResize());
    publish(2, 0);
    EXPECT_FALSE(table.doResize());
    EXPECT_EQ(table.capacity(), 3u);
    EXPECT_EQ(statistics.remaps, 0u);
}

TEST_F(SlotTableGrowthTest, PublishedSlotsAreMapped)
{
    ASSERT_TRUE(table.attach());
    growTo(1000, 1);
    slots.store32(SlotsOffset::slot(24, 999) + RecordOffset::sequence, 77);
    EXPECT_EQ(table.slotAt(999, 8), nullptr);
    EXPECT_TRUE(table.doResize());
    EXPECT_EQ(table.capacity(), 1000u);
    EXPECT_EQ(table.maximumIndex(), 999u);
    EXPECT_EQ(table.readableSize(), 24576u);
    EXPECT_EQ(table.layout(0).reachable, 1000u);
    ASSERT_NE(table.slotAt(999, 8), nullptr);
    EXPECT_EQ(Mem::Atomics::load32(table.slotAt(999, 8) + SlotReaderGenericTable::sequenceOffset,
                                   std::memory_order_relaxed),
              77u);
    EXPECT_EQ(statistics.remaps, 1u);
    EXPECT_FALSE(table.doResize());
    EXPECT_THAT(handler.lines, IsEmpty());
}

TEST_F(SlotTableGrowthTest, AMappingThatStaysWhereItIsIsNotCountedAsMoved)
{
    ASSERT_TRUE(table.attach());
    void const* const before = &table.liveHeader();
    growTo(4, 1);  // on the page that is mapped
    EXPECT_TRUE(table.doResize());
    EXPECT_EQ(&table.liveHeader(), before);
    EXPECT_EQ(statistics.remaps, 1u);
    EXPECT_EQ(statistics.movedRemaps, 0u);
}

TEST_F(SlotTableGrowthTest, AMappingThatMovesIsCounted)
{
    ASSERT_TRUE(table.attach());
    char const* const before = reinterpret_cast<char const*>(&table.liveHeader());
    Neighbour const neighbour(before + 4096);
    growTo(1000, 1);
    EXPECT_TRUE(table.doResize());
    EXPECT_NE(reinterpret_cast<char const*>(&table.liveHeader()), before);
    EXPECT_EQ(offsetInMapping(table.slotAt(0, 8)), 200u);
    EXPECT_EQ(offsetInMapping(table.lookasideValue()), 192u);
    EXPECT_EQ(statistics.remaps, 1u);
    EXPECT_EQ(statistics.movedRemaps, 1u);
}

TEST_F(SlotTableGrowthTest, AChangedVersionAloneMapsAgain)
{
    ASSERT_TRUE(table.attach());
    publish(3, 0xffffffff);
    EXPECT_TRUE(table.doResize());
    EXPECT_EQ(table.capacity(), 3u);
    EXPECT_EQ(statistics.remaps, 1u);
    EXPECT_FALSE(table.doResize());
}

TEST_F(SlotTableGrowthTest, MapsExactlyWhatTheCountNeeds)
{
    ASSERT_TRUE(table.attach());
    slots.resize(1 << 20);
    publish(1000, 1);
    EXPECT_TRUE(table.doResize());
    EXPECT_EQ(table.readableSize(), 24576u);
}

TEST_F(SlotTableGrowthTest, ASmallerCountIsFollowed)
{
    growTo(1000, 1);
    ASSERT_TRUE(table.attach());
    publish(2, 2);
    EXPECT_TRUE(table.doResize());
    EXPECT_EQ(table.capacity(), 2u);
    EXPECT_EQ(table.maximumIndex(), 1u);
    EXPECT_EQ(table.readableSize(), 4096u);
    EXPECT_EQ(table.layout(0).reachable, 2u);
}

TEST_F(SlotTableGrowthTest, WithoutSlotsTheHighestIndexIsZeroNotNone)
{
    ASSERT_TRUE(table.attach());
    publish(0, 1);
    EXPECT_TRUE(table.doResize());
    EXPECT_EQ(table.capacity(), 0u);
    EXPECT_EQ(table.maximumIndex(), 0u);
    EXPECT_NE(table.slotAt(0, 8), nullptr);
}

TEST_F(SlotTableGrowthTest, AFileShorterThanTheCountNeedsIsCorruption)
{
    ASSERT_TRUE(table.attach());
    slots.resize(24199);
    publish(1000, 1);
    std::string const message = "SlotReaderGeneric::doResize() requesting to map " + path +
                                " 1000 slots. Requested file resize to 24200 but real file size "
                                "is 24199";
    for (int time = 0; time < 2; ++time) {
        handler.lines.clear();
        try {
            table.doResize();
            ADD_FAILURE() << "mapped";
        } catch (CorruptionDetectedException const& exception) {
            EXPECT_EQ(exception.what(), message);
        }
        EXPECT_THAT(handler.lines, ElementsAre("0 " + message));
        // Nothing of what was mapped before has changed.
        EXPECT_EQ(table.capacity(), 3u);
        EXPECT_EQ(table.maximumIndex(), 2u);
        EXPECT_EQ(table.readableSize(), 4096u);
        EXPECT_EQ(offsetInMapping(table.slotAt(2, 8)), 248u);
    }
    EXPECT_EQ(statistics.remaps, 0u);
}

TEST_F(SlotTableGrowthTest, TheSizeNeededWrapsAt32BitsAndNoMemoryOfSizeZeroCanBeMapped)
{
    image.slotsHeader.slotSize = 16;
    image.writeTo(root, "eq");
    LiveFile resized(path);
    ASSERT_TRUE(table.attach());
    // 16 * (1 + count) + 176 is 2^32.
    resized.store64(SlotsOffset::mappedSlots, packPair(1, 268435444));
    std::string const message =
        "SlotReaderGeneric::doResize() failed to resize shared memory to size 0 - the system may "
        "be out of memory.";
    try {
        table.doResize();
        ADD_FAILURE() << "mapped";
    } catch (Dovan::MemoryResourceException const& exception) {
        EXPECT_EQ(exception.what(), message);
    }
    EXPECT_THAT(handler.lines, ElementsAre("0 " + message));
    EXPECT_EQ(table.capacity(), 3u);
    EXPECT_EQ(table.maximumIndex(), 2u);
    EXPECT_EQ(statistics.remaps, 0u);
}

TEST_F(SlotTableGrowthTest, AWrappedSizeMapsNoMoreThanItSays)
{
    ASSERT_TRUE(table.attach());
    // 24 * (1 + count) + 176 is 2^32 + 16.
    publish(178956963, 1);
    EXPECT_TRUE(table.doResize());
    EXPECT_EQ(table.capacity(), 178956963u);
    EXPECT_EQ(table.readableSize(), 4096u);
    EXPECT_NE(table.slotAt(161, 8), nullptr);
    EXPECT_EQ(table.slotAt(162, 8), nullptr);
    EXPECT_EQ(table.layout(0).reachable, 162u);
}

TEST_F(SlotTableGrowthTest, GrowthDoesNotOpenTheFileAgain)
{
    ASSERT_TRUE(table.attach());
    growTo(1000, 1);
    UnreadableFile const unreadable(path);
    EXPECT_TRUE(table.doResize());
}

// Lets a test act between the look at the file's size and the mapping, by the trace of the latter.
class ActingHandler final : public Dovan::Platform::DebugHandler
{
public:
    explicit ActingHandler(std::function<void()> action) : action_(std::move(action)) {}

    bool isEnabled(int level) const override { return level <= 5; }

    void log(std::ostream& message, int /*level*/) override
    {
        std::string const text = dynamic_cast<std::ostringstream&>(message).str();
        if (text.find("QuaskMem::attach()") == 0) {
            action_();
        }
    }

private:
    std::function<void()> action_;
};

TEST_F(SlotTableGrowthTest, ATableThatGrowsWhileItIsAttachedIsMappedAsItIsThen)
{
    ActingHandler acting([this] { growTo(1000, 1); });
    SlotReaderGenericTable growing(acting, rootPath, statistics);
    ASSERT_TRUE(growing.attach());
    EXPECT_EQ(growing.capacity(), 1000u);
    EXPECT_EQ(growing.maximumIndex(), 999u);
    EXPECT_EQ(growing.readableSize(), 24576u);
    EXPECT_NE(growing.slotAt(999, 8), nullptr);
    EXPECT_EQ(growing.layout(0).reachable, 1000u);
    EXPECT_FALSE(growing.doResize());
}

TEST_F(SlotTableGrowthTest, ATableThatGrowsByLessThanAPageWhileItIsAttachedIsMappedToo)
{
    constexpr std::uint32_t count = 165;
    ASSERT_EQ(slotsFileSize(24, count), 4160u);  // on two pages; the three slots take 272
    ActingHandler acting([this] { growTo(count, 1); });
    SlotReaderGenericTable growing(acting, rootPath, statistics);
    ASSERT_TRUE(growing.attach());
    EXPECT_EQ(growing.readableSize(), 8192u);
    EXPECT_NE(growing.slotAt(count - 1, 8), nullptr);
}

TEST_F(SlotTableGrowthTest, ACountThatTheFileDoesNotReachIsLeftToTheWalk)
{
    ActingHandler acting([this] {
        slots.resize(10000);
        publish(1000, 1);
    });
    SlotReaderGenericTable growing(acting, rootPath, statistics);
    ASSERT_TRUE(growing.attach());
    EXPECT_EQ(growing.maximumIndex(), 999u);
    EXPECT_EQ(growing.readableSize(), 4096u);
    EXPECT_EQ(growing.slotAt(999, 8), nullptr);
}

}  // namespace
