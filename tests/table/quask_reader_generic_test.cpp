#include "table/quask_reader_generic.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

#include "base/exception.h"
#include "support/captured_streams.h"
#include "support/live_file.h"
#include "support/private_root.h"
#include "support/table_files.h"
#include "table/scripted_handler.h"

namespace {

using namespace QuaskTesting;
using Quask::Direction;
using Quask::QuaskReaderGeneric;
using testing::ElementsAre;

class QuaskReaderTest : public testing::Test
{
protected:
    ~QuaskReaderTest() override { unsetenv("DOVAN_DEBUG"); }

    void makeReader()
    {
        image.writeTo(root, "feed/eq");
        reader = std::make_unique<QuaskReaderGeneric>("feed/eq");
    }

    bool open()
    {
        makeReader();
        return reader->attach() && reader->validate(error);
    }

    void scan() { reader->scan(handler, 0, 0xffffffff, Direction::upward, true); }

    PrivateRoot root;
    TableImage image =
        TableImage::of("std::int32_t", 4).buckets(2).chain(1, {{0, bytesOf(1)}, {1, bytesOf(2)}});
    std::unique_ptr<QuaskReaderGeneric> reader;
    ScriptedHandler handler{4};
    std::string error;
};

TEST_F(QuaskReaderTest, ScansATable)
{
    ASSERT_TRUE(open());
    EXPECT_EQ(error, "");
    scan();
    EXPECT_THAT(handler.lines,
                ElementsAre("0: done", "1: slot 0 01000000", "1: slot 1 02000000", "1: done"));
}

TEST_F(QuaskReaderTest, ScansForAnyHandler)
{
    ASSERT_TRUE(open());
    QuaskReaderGeneric::ScanHandler& any = handler;
    reader->scan(any, 1, 0, Direction::downward, true);
    EXPECT_EQ(handler.lines.size(), 0u);
    reader->scan(any, 1, 1, Direction::downward, true);
    EXPECT_EQ(handler.lines.size(), 4u);
}

TEST_F(QuaskReaderTest, GivesTheTypeAndTheSizeOfTheValues)
{
    ASSERT_TRUE(open());
    EXPECT_EQ(reader->valueFormat().typeName, "std::int32_t");
    EXPECT_EQ(reader->valueFormat().size, 4u);
    EXPECT_EQ(reader->mappedSlotBytes(), 248u);
    EXPECT_EQ(reader->readableSlotBytes(), 4096u);
}

TEST_F(QuaskReaderTest, CannotBeAttachedWithoutOneOfTheFiles)
{
    for (TableFile const file : {TableFile::buckets, TableFile::slots}) {
        TableImage const whole = image;
        image.without(file);
        makeReader();
        EXPECT_FALSE(reader->attach()) << fileName(file);
        image = whole;
        image.resize(file, 0);
        makeReader();
        EXPECT_FALSE(reader->attach()) << fileName(file);
        image = whole;
    }
}

TEST_F(QuaskReaderTest, NeedsNoneOfTheOtherFiles)
{
    image.without(TableFile::vandral1).without(TableFile::vandral2).without(TableFile::orvik);
    EXPECT_TRUE(open());
}

TEST_F(QuaskReaderTest, IsAttachedToAnyContents)
{
    image.patch(TableFile::buckets, 0, std::string(24, '\xff'));
    image.patch(TableFile::slots, 0, std::string(200, '\xff'));
    makeReader();
    ASSERT_TRUE(reader->attach());
    EXPECT_EQ(reader->liveBucketsHeader().numBuckets, 0xffffffffu);
    EXPECT_EQ(reader->liveSlotsHeader().maxSlots, 0xffffffffu);
}

TEST_F(QuaskReaderTest, TheBucketHeaderIsValidatedFirst)
{
    image.bucketsHeader.version = 2;
    image.slotsHeader.version = 5;
    EXPECT_FALSE(open());
    EXPECT_EQ(error, "BucketTable::validate() bad version: 2");
    image.bucketsHeader.version = 1;
    EXPECT_FALSE(open());
    EXPECT_EQ(error, "SlotTable::Header::validate() bad version: 5");
}

TEST_F(QuaskReaderTest, TheSlotHeaderIsNotExaminedWhenTheBucketHeaderFails)
{
    setenv("DOVAN_DEBUG", "0", 1);
    image.bucketsHeader.version = 2;
    image.slotsHeader.version = 5;
    CapturedStreams const streams;
    EXPECT_FALSE(open());
    EXPECT_EQ(streams.err(), "Quask-feed/eq 0: BucketTable::validate() bad version: 2\n");
}

TEST_F(QuaskReaderTest, CountsWhatItMeets)
{
    image.rewriting(0, bytesOf(1), bytesOf(9));
    ASSERT_TRUE(open());
    LiveFile slots(root.path() + "/feed/eq/slots");
    handler.when("1: slot 0 01000000 s2 *", [&slots] {
        slots.relink(SlotsOffset::slot(24, 0), 1);
        slots.relink(SlotsOffset::mappedSlots, 2);
    });
    scan();
    EXPECT_EQ(reader->lookasideHits(), 2u);
    EXPECT_EQ(reader->chainRestarts(), 1u);
    EXPECT_EQ(reader->readerStatistics().remaps, 1u);
    EXPECT_EQ(reader->readerStatistics().movedRemaps, 0u);
}

TEST_F(QuaskReaderTest, ValidatingSetsTheCountersToZero)
{
    image.rewriting(0, bytesOf(1), bytesOf(9));
    ASSERT_TRUE(open());
    LiveFile slots(root.path() + "/feed/eq/slots");
    handler.when("1: slot 0 01000000 s2 *", [&slots] {
        slots.relink(SlotsOffset::slot(24, 0), 1);
        slots.relink(SlotsOffset::mappedSlots, 2);
    });
    scan();
    ASSERT_TRUE(reader->validate(error));
    EXPECT_EQ(reader->lookasideHits(), 0u);
    EXPECT_EQ(reader->chainRestarts(), 0u);
    EXPECT_EQ(reader->readerStatistics().remaps, 0u);
}

TEST_F(QuaskReaderTest, WhatAWalkThrowsPassesThrough)
{
    image.bucketLinks[0].value = 9;
    ASSERT_TRUE(open());
    EXPECT_THROW(scan(), Quask::CorruptionDetectedException);
}

TEST_F(QuaskReaderTest, LogsToAChannelNamedAfterItsTable)
{
    setenv("DOVAN_DEBUG", "Quask-feed/eq=0,Quask-feed/fx=-1", 1);
    CapturedStreams const streams;
    QuaskReaderGeneric missing("feed/eq");
    EXPECT_FALSE(missing.attach());
    QuaskReaderGeneric other("feed/fx");
    EXPECT_FALSE(other.attach());
    EXPECT_EQ(streams.err(), "Quask-feed/eq 0: BucketReader::attach() no shared memory region\n");
}

TEST_F(QuaskReaderTest, UnmapsItsFilesWhenItIsDestroyed)
{
    auto const mapped = [this] {
        std::ifstream maps("/proc/self/maps");
        std::string const text{std::istreambuf_iterator<char>(maps),
                               std::istreambuf_iterator<char>()};
        return text.find(root.path()) != std::string::npos;
    };
    ASSERT_TRUE(open());
    EXPECT_TRUE(mapped());
    reader.reset();
    EXPECT_FALSE(mapped());
}

}  // namespace
