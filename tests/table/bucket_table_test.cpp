#include "table/bucket_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/aligned_bytes.h"
#include "support/recording_handler.h"
#include "support/table_files.h"

namespace {

using namespace QuaskTesting;
using Header = Quask::BucketTable::Header;
using testing::ElementsAre;
using testing::IsEmpty;

class BucketHeaderTest : public testing::Test
{
protected:
    // Whether the header of `image` fits a file of this size; what it lacks is in `error`.
    bool validate(unsigned fileSize, unsigned expectedOrvik = 0)
    {
        AlignedBytes const live(image.bucketsFile());
        return Header(live.as<Header>()).validate(handler, fileSize, expectedOrvik, error);
    }

    // That it does not, for this reason.
    void expectFailure(std::string const& reason, unsigned fileSize, unsigned expectedOrvik = 0)
    {
        error = "of an earlier check";
        handler.lines.clear();
        EXPECT_FALSE(validate(fileSize, expectedOrvik));
        EXPECT_EQ(error, reason);
        EXPECT_THAT(handler.lines, ElementsAre("0 " + reason));
    }

    TableImage image = TableImage::of("std::int32_t", 4);
    RecordingHandler handler;
    std::string error;
};

TEST_F(BucketHeaderTest, CopiesEveryField)
{
    image.bucketsHeader.version = 2;
    image.bucketsHeader.orvik = 3;
    image.bucketsHeader.numBuckets = 4;
    image.bucketsHeader.ownerPid = 5;
    AlignedBytes const live(image.bucketsFile());
    Header const copy(live.as<Header>());
    EXPECT_EQ(copy.magic, 0x544b424b53415551u);
    EXPECT_EQ(copy.version, 2u);
    EXPECT_EQ(copy.orvik, 3u);
    EXPECT_EQ(copy.numBuckets, 4u);
    EXPECT_EQ(copy.ownerPid, 5u);
}

TEST_F(BucketHeaderTest, AFileOfTheSizeItNeedsOrLongerPasses)
{
    image.buckets(1024);
    EXPECT_TRUE(validate(8216));
    EXPECT_TRUE(validate(8217));
    EXPECT_TRUE(validate(0xffffffff));
    EXPECT_EQ(error, "");
    EXPECT_THAT(handler.lines, IsEmpty());
}

TEST_F(BucketHeaderTest, AFileWithoutBucketsIsItsHeader)
{
    EXPECT_TRUE(validate(24));
}

TEST_F(BucketHeaderTest, AFileShorterThanAHeaderFails)
{
    expectFailure("BucketTable::validate() bad header file size: 23 wanted:24", 23);
    expectFailure("BucketTable::validate() bad header file size: 0 wanted:24", 0);
}

TEST_F(BucketHeaderTest, AnotherMagicFailsAndIsShownInHexadecimal)
{
    image.bucketsHeader.magic = "QUASKSLT";
    expectFailure("BucketTable::validate() bad magic: 544c534b53415551", 24);
    image.bucketsHeader.magic = "\x0a";
    expectFailure("BucketTable::validate() bad magic: a", 24);
}

TEST_F(BucketHeaderTest, AnotherVersionFails)
{
    image.bucketsHeader.version = 10;
    expectFailure("BucketTable::validate() bad version: 10", 24);
    image.bucketsHeader.version = 0;
    expectFailure("BucketTable::validate() bad version: 0", 24);
}

TEST_F(BucketHeaderTest, AnExpectedStampIsComparedAndShownInHexadecimal)
{
    image.bucketsHeader.orvik = 0xabc;
    EXPECT_TRUE(validate(24, 0xabc));
    expectFailure("BucketTable::validate() bad orvik:abc wanted:1f", 24, 31);
}

TEST_F(BucketHeaderTest, WithoutAnExpectationEveryStampPasses)
{
    image.bucketsHeader.orvik = 0xffffffff;
    EXPECT_TRUE(validate(24, 0));
}

TEST_F(BucketHeaderTest, AFileTooShortForItsBucketsFails)
{
    image.bucketsHeader.numBuckets = 1024;
    expectFailure("BucketTable::validate() bad shmem size:8000 wanted:8216 for 1024 buckets", 8000);
    expectFailure("BucketTable::validate() bad shmem size:8215 wanted:8216 for 1024 buckets", 8215);
}

TEST_F(BucketHeaderTest, TheSizeThatBucketsNeedWrapsAt32Bits)
{
    image.bucketsHeader.numBuckets = 0x20000000;
    EXPECT_TRUE(validate(24));
    image.bucketsHeader.numBuckets = 0x20000001;
    expectFailure("BucketTable::validate() bad shmem size:24 wanted:32 for 536870913 buckets", 24);
    image.bucketsHeader.numBuckets = 0xffffffff;
    EXPECT_TRUE(validate(24));
}

TEST_F(BucketHeaderTest, TheFirstCheckThatFailsIsReported)
{
    image.bucketsHeader.magic = "x";
    image.bucketsHeader.version = 2;
    image.bucketsHeader.numBuckets = 1;
    expectFailure("BucketTable::validate() bad header file size: 5 wanted:24", 5, 1);
    expectFailure("BucketTable::validate() bad magic: 78", 24, 1);
    image.bucketsHeader.magic = "QUASKBKT";
    expectFailure("BucketTable::validate() bad version: 2", 24, 1);
    image.bucketsHeader.version = 1;
    expectFailure("BucketTable::validate() bad orvik:71092 wanted:1", 24, 1);
}

}  // namespace
