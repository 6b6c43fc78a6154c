#include "table/bucket_reader_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>

#include "base/exception.h"
#include "support/private_root.h"
#include "support/recording_handler.h"
#include "support/table_files.h"
#include "support/unreadable_file.h"

namespace {

using namespace QuaskTesting;
using Quask::BucketReaderTable;
using Quask::CorruptionDetectedException;
using testing::ElementsAre;
using testing::IsEmpty;

class BucketReaderTest : public testing::Test
{
protected:
    void write() { image.writeTo(root, "eq"); }

    // Attaches to what `image` describes.
    bool attach()
    {
        write();
        return table.attach();
    }

    // Attaches and validates.
    bool open() { return attach() && table.validate(error); }

    void expectOutside(unsigned index, std::string const& message)
    {
        handler.lines.clear();
        try {
            table.getRef(index);
            ADD_FAILURE() << "bucket " << index << " is there";
        } catch (CorruptionDetectedException const& exception) {
            EXPECT_STREQ(exception.what(), message.c_str());
        }
        EXPECT_THAT(handler.lines, ElementsAre("0 " + message));
    }

    PrivateRoot root;
    TableImage image = TableImage::of("std::int32_t", 4).buckets(3).chain(1, {{7, ""}});
    RecordingHandler handler{0};
    Quask::RootPath rootPath{handler, "eq", false};
    BucketReaderTable table{handler, rootPath};
    std::string error;
};

TEST_F(BucketReaderTest, AMissingFileCannotBeAttached)
{
    EXPECT_FALSE(table.attach());
    EXPECT_THAT(handler.lines, ElementsAre("0 BucketReader::attach() no shared memory region"));
}

TEST_F(BucketReaderTest, AnEmptyFileCannotBeAttached)
{
    image.resize(TableFile::buckets, 0);
    EXPECT_FALSE(attach());
    EXPECT_THAT(handler.lines, ElementsAre("0 BucketReader::attach() no shared memory region"));
}

TEST_F(BucketReaderTest, APipeInItsPlaceCannotBeAttached)
{
    ASSERT_EQ(mkfifo((root.makeDirectory("eq") + "/buckets").c_str(), 0600), 0);
    EXPECT_FALSE(table.attach());
    EXPECT_THAT(handler.lines, ElementsAre("0 BucketReader::attach() no shared memory region"));
}

TEST_F(BucketReaderTest, AFileThatCannotBeOpenedCannotBeAttached)
{
    write();
    UnreadableFile const unreadable(root.path() + "/eq/buckets");
    EXPECT_FALSE(table.attach());
    EXPECT_THAT(handler.lines,
                ElementsAre("0 BucketReader::attach() cannot attach to shmem size:48"));
}

TEST_F(BucketReaderTest, AttachingTakesAnyContents)
{
    image.bucketsHeader.magic = "no magic";
    EXPECT_TRUE(attach());
    EXPECT_EQ(table.bucketCount(), 0u);
    EXPECT_EQ(table.liveHeader().version, 1u);
    EXPECT_THAT(handler.lines, IsEmpty());
}

TEST_F(BucketReaderTest, AFileOfOneByteIsReadAsIfZerosFollowed)
{
    image.resize(TableFile::buckets, 1);
    EXPECT_TRUE(attach());
    EXPECT_EQ(table.liveHeader().magic, std::uint64_t('Q'));
    EXPECT_EQ(table.liveHeader().ownerPid, 0u);
    EXPECT_FALSE(table.validate(error));
    EXPECT_EQ(error, "BucketTable::validate() bad header file size: 1 wanted:24");
}

TEST_F(BucketReaderTest, TheBucketCountIsKnownOnceTheHeaderIsValidated)
{
    ASSERT_TRUE(open());
    EXPECT_EQ(table.bucketCount(), 3u);
    EXPECT_EQ(table.readableBuckets(), 3u);
    EXPECT_EQ(error, "");
}

TEST_F(BucketReaderTest, AHeaderThatFailsACheckLeavesTheCountAtZero)
{
    image.bucketsHeader.numBuckets = 1024;
    image.resize(TableFile::buckets, 8000);
    EXPECT_FALSE(open());
    EXPECT_EQ(error, "BucketTable::validate() bad shmem size:8000 wanted:8216 for 1024 buckets");
    EXPECT_THAT(handler.lines, ElementsAre("0 " + error));
    EXPECT_EQ(table.bucketCount(), 0u);
}

TEST_F(BucketReaderTest, NoStampIsExpectedOfAHeader)
{
    image.bucketsHeader.orvik = 0x12345678;
    EXPECT_TRUE(open());
}

TEST_F(BucketReaderTest, TheSizeCheckedIsTheOneAtTheTimeOfTheCheck)
{
    ASSERT_TRUE(attach());
    std::filesystem::resize_file(root.path() + "/eq/buckets", 40);
    EXPECT_FALSE(table.validate(error));
    EXPECT_EQ(error, "BucketTable::validate() bad shmem size:40 wanted:48 for 3 buckets");
}

TEST_F(BucketReaderTest, GivesTheLinkOfEachBucket)
{
    image.bucketLinks[1].version = 5;
    ASSERT_TRUE(open());
    EXPECT_TRUE(table.getRef(0).isNull());
    EXPECT_EQ(table.getRef(1).index, 7u);
    EXPECT_EQ(table.getRef(1).version, 5u);
    EXPECT_TRUE(table.getRef(2).isNull());
}

TEST_F(BucketReaderTest, ALinkIsAnAddressInTheMapping)
{
    ASSERT_TRUE(open());
    Quask::SlotRef const& link = table.getRef(2);
    EXPECT_EQ(reinterpret_cast<char const*>(&link),
              reinterpret_cast<char const*>(&table.liveHeader()) + BucketsOffset::link(2));
}

TEST_F(BucketReaderTest, ABucketBeyondTheLastIsCorruption)
{
    ASSERT_TRUE(open());
    expectOutside(3, "BucketReader::getRef() out-of-range, index:3 max:2");
    expectOutside(0xffffffff, "BucketReader::getRef() out-of-range, index:4294967295 max:2");
}

TEST_F(BucketReaderTest, BeforeTheValidationEveryMappedBucketIsAccepted)
{
    ASSERT_TRUE(attach());
    EXPECT_EQ(table.getRef(1).index, 7u);
}

// The highest index wraps to 0xffffffff then, so no index is out of range; the mapping still is.
TEST_F(BucketReaderTest, WithoutBucketsOnlyTheMappingIsALimit)
{
    image.buckets(0);
    image.resize(TableFile::buckets, 24);
    ASSERT_TRUE(open());
    EXPECT_EQ(table.readableBuckets(), 0u);
    EXPECT_EQ(table.getRef(0).index, 0u);
    EXPECT_EQ(table.getRef(508).version, 0u);
    expectOutside(509,
                  "BucketReader::getRef() outside the mapped file, index:509 offset:4096 "
                  "mapped:4096");
    expectOutside(0xffffffff,
                  "BucketReader::getRef() outside the mapped file, index:4294967295 "
                  "offset:34359738384 mapped:4096");
}

TEST_F(BucketReaderTest, ACountWhoseSizeWrapsIsStoppedAtTheEndOfTheMapping)
{
    image.bucketsHeader.numBuckets = 0x20000003;
    ASSERT_TRUE(open());
    EXPECT_EQ(table.bucketCount(), 0x20000003u);
    EXPECT_EQ(table.readableBuckets(), 509u);
    EXPECT_EQ(table.getRef(1).index, 7u);
    // After the end of the file, on its last page.
    EXPECT_EQ(table.getRef(3).index, 0u);
    expectOutside(509,
                  "BucketReader::getRef() outside the mapped file, index:509 offset:4096 "
                  "mapped:4096");
}

TEST_F(BucketReaderTest, BytesAfterTheBucketsAreIgnored)
{
    image.resize(TableFile::buckets, 100000);
    ASSERT_TRUE(open());
    EXPECT_EQ(table.bucketCount(), 3u);
    EXPECT_EQ(table.readableBuckets(), 3u);
}

TEST_F(BucketReaderTest, AFileOfFourGibibytesIsMappedToItsEnd)
{
    image.bucketsHeader.numBuckets = 0x1ffffffd;
    write();
    std::filesystem::resize_file(root.path() + "/eq/buckets", 5000000000);
    ASSERT_TRUE(table.attach());
    ASSERT_TRUE(table.validate(error)) << error;
    EXPECT_EQ(table.readableBuckets(), 0x1ffffffdu);
    EXPECT_EQ(table.getRef(0x1ffffffc).index, 0u);
}

TEST_F(BucketReaderTest, TheMappingStaysAsItWasWhenTheFileGrows)
{
    ASSERT_TRUE(open());
    std::filesystem::resize_file(root.path() + "/eq/buckets", 1 << 20);
    EXPECT_EQ(table.readableBuckets(), 3u);
    expectOutside(3, "BucketReader::getRef() out-of-range, index:3 max:2");
}

}  // namespace
