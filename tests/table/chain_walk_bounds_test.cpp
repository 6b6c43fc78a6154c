// Which buckets a walk visits.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/exception.h"
#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;
using Quask::Direction;

class ChainWalkBoundsTest : public WalkFixture
{
protected:
    // The buckets of a table of ten that a walk visits, in its order.
    std::string visited(unsigned first, unsigned count, Direction direction, bool byPosition)
    {
        handler.lines.clear();
        walk(first, count, direction, byPosition);
        std::string text;
        for (std::string const& line : handler.lines) {
            if (line.find(": done") != std::string::npos) {
                text += line.substr(0, line.find(':')) + " ";
            }
        }
        return text;
    }
    std::string upward(unsigned first, unsigned count)
    {
        return visited(first, count, Direction::upward, true);
    }
    std::string downward(unsigned first, unsigned count)
    {
        return visited(first, count, Direction::downward, true);
    }
    std::string upwardByElements(unsigned first, unsigned count)
    {
        return visited(first, count, Direction::upward, false);
    }
    std::string downwardByElements(unsigned first, unsigned count)
    {
        return visited(first, count, Direction::downward, false);
    }

    // Elements are in buckets 2, 3, 5 and 9.
    void SetUp() override
    {
        image.buckets(10)
            .chain(2, {{0, ""}})
            .chain(3, {{1, ""}, {2, ""}})
            .chain(5, {{3, ""}})
            .chain(9, {{4, ""}});
        open();
    }
};

TEST_F(ChainWalkBoundsTest, UpwardVisitsAsManyBucketsAsAskedFor)
{
    EXPECT_EQ(upward(0, 3), "0 1 2 ");
    EXPECT_EQ(upward(4, 2), "4 5 ");
    EXPECT_EQ(upward(4, 0), "");
}

TEST_F(ChainWalkBoundsTest, UpwardEndsWithTheLastBucket)
{
    EXPECT_EQ(upward(7, 3), "7 8 9 ");
    EXPECT_EQ(upward(7, 4), "7 8 9 ");
    EXPECT_EQ(upward(0, 0xffffffff), "0 1 2 3 4 5 6 7 8 9 ");
}

TEST_F(ChainWalkBoundsTest, UpwardFromBeyondTheLastBucketVisitsNone)
{
    EXPECT_EQ(upward(10, 1), "");
    EXPECT_EQ(upward(11, 1), "");
    EXPECT_EQ(upward(11, 0xffffffff), "");
}

TEST_F(ChainWalkBoundsTest, UpwardTheEndWrapsAt32Bits)
{
    // 5 + 0xffffffff is 4, which is below the number of buckets, so that the bound stays there.
    EXPECT_EQ(upward(5, 0xffffffff), "");
    EXPECT_EQ(upwardByElements(5, 0xffffffff), "5 6 7 8 9 ");
}

TEST_F(ChainWalkBoundsTest, DownwardEndsWithTheFirstBucketWhateverTheCount)
{
    EXPECT_EQ(downward(3, 1), "3 2 1 0 ");
    EXPECT_EQ(downward(3, 2), "3 2 1 0 ");
    EXPECT_EQ(downward(9, 0x7fffffff), "9 8 7 6 5 4 3 2 1 0 ");
}

TEST_F(ChainWalkBoundsTest, DownwardWithoutACountVisitsNone)
{
    EXPECT_EQ(downward(3, 0), "");
}

TEST_F(ChainWalkBoundsTest, DownwardFromBucketZeroWithoutACountVisitsBucketZero)
{
    EXPECT_EQ(downward(0, 0), "0 ");
    EXPECT_EQ(downward(0, 1), "0 ");
}

TEST_F(ChainWalkBoundsTest, DownwardACountThatEqualsTheFirstBucketIsOneMore)
{
    EXPECT_EQ(downward(5, 5), "5 4 3 2 1 0 ");
    setHead(0, 4);
    setHead(1, 4);
    EXPECT_EQ(downwardByElements(1, 1), "1 0 ");
    EXPECT_EQ(downwardByElements(3, 1), "3 ");
    EXPECT_EQ(downwardByElements(3, 2), "3 2 ");
    EXPECT_EQ(downwardByElements(3, 3), "3 2 1 0 ");
}

TEST_F(ChainWalkBoundsTest, DownwardTheEndWrapsAt32Bits)
{
    EXPECT_EQ(downward(5, 0xffffffff), "");
    EXPECT_EQ(downward(0, 0xffffffff), "0 ");
}

TEST_F(ChainWalkBoundsTest, DownwardFromBeyondTheLastBucketIsCorruption)
{
    try {
        downward(10, 1);
        ADD_FAILURE() << "bucket 10 was visited";
    } catch (Quask::CorruptionDetectedException const& exception) {
        EXPECT_STREQ(exception.what(), "BucketReader::getRef() out-of-range, index:10 max:9");
    }
    EXPECT_EQ(downwardByElements(10, 1), "");
}

TEST_F(ChainWalkBoundsTest, EveryDirectionButUpwardIsDownward)
{
    for (int const direction : {-1, 0, 2, 7}) {
        EXPECT_EQ(visited(1, 2, static_cast<Direction>(direction), true), "1 0 ") << direction;
    }
}

TEST_F(ChainWalkBoundsTest, ByElementsOnlyBucketsWithElementsCount)
{
    EXPECT_EQ(upwardByElements(0, 1), "0 1 2 ");
    EXPECT_EQ(upwardByElements(0, 3), "0 1 2 3 4 5 ");
    EXPECT_EQ(upwardByElements(3, 1), "3 ");
    EXPECT_EQ(upwardByElements(0, 0), "");
    EXPECT_EQ(downwardByElements(9, 2), "9 8 7 6 5 ");
}

TEST_F(ChainWalkBoundsTest, ByElementsTheWalkEndsWithTheTableAtTheLatest)
{
    EXPECT_EQ(upwardByElements(4, 6), "4 5 6 7 8 9 ");
    EXPECT_EQ(upwardByElements(10, 1), "");
    EXPECT_EQ(downwardByElements(4, 6), "4 3 2 1 0 ");
}

TEST_F(ChainWalkBoundsTest, ByElementsABucketThatIsWalkedAgainCountsAgain)
{
    handler.when("3: slot 1 00000000", [this] { setNext(1, 2); });
    EXPECT_EQ(upwardByElements(2, 3), "2 3 ");
    EXPECT_EQ(restarts, 1u);
}

TEST_F(ChainWalkBoundsTest, ByPositionABucketThatIsWalkedAgainCountsOnce)
{
    handler.when("3: slot 1 00000000", [this] { setNext(1, 2); });
    EXPECT_EQ(upward(2, 3), "2 3 4 ");
    EXPECT_EQ(restarts, 1u);
}

class EmptyTableWalkTest : public WalkFixture
{};

TEST_F(EmptyTableWalkTest, ByElementsAWalkOverEmptyBucketsEndsWithTheLast)
{
    image.buckets(5);
    open();
    walk(0, 2, Direction::upward, false);
    EXPECT_THAT(handler.lines,
                testing::ElementsAre("0: done", "1: done", "2: done", "3: done", "4: done"));
}

TEST_F(EmptyTableWalkTest, WithoutBucketsNoneIsVisited)
{
    image.buckets(0);
    open();
    walk();
    walk(0, 5, Direction::upward, false);
    walk(0, 0, Direction::downward, false);
    EXPECT_THAT(handler.lines, testing::IsEmpty());
}

}  // namespace
