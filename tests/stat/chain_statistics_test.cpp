#include "stat/chain_statistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "stat/chain_counter.h"

namespace {

using Quask::Stat::ChainCounter;
using Quask::Stat::ChainStatistics;
using Quask::Stat::WalkProgress;
using Lengths = std::map<std::uint64_t, std::uint64_t>;

class ChainStatisticsTest : public testing::Test
{
protected:
    void chain(unsigned length) { chains.add(length, bucket_++); }

    ChainStatistics chains;

private:
    unsigned bucket_ = 0;
};

TEST_F(ChainStatisticsTest, OfNothingAreZero)
{
    EXPECT_EQ(chains.lengths(), Lengths{});
    EXPECT_EQ(chains.mean(), 0);
    EXPECT_EQ(chains.deviation(), 0);
    EXPECT_TRUE(chains.longest().empty());
}

TEST_F(ChainStatisticsTest, CountLengthsAndTheirSpread)
{
    for (unsigned const length : {2u, 0u, 4u, 2u}) {
        chain(length);
    }
    EXPECT_EQ(chains.lengths(), (Lengths{{0, 1}, {2, 2}, {4, 1}}));
    EXPECT_EQ(chains.buckets(), 4u);
    EXPECT_EQ(chains.elements(), 8u);
    EXPECT_EQ(chains.emptyBuckets(), 1u);
    EXPECT_DOUBLE_EQ(chains.mean(), 2);
    EXPECT_DOUBLE_EQ(chains.deviation(), std::sqrt(2));
    EXPECT_DOUBLE_EQ(chains.idealDeviation(), std::sqrt(2));
    EXPECT_DOUBLE_EQ(chains.idealEmptyBuckets(), 4 * std::exp(-2));
}

TEST_F(ChainStatisticsTest, EqualLengthsHaveNoSpread)
{
    for (int i = 0; i < 1000; ++i) {
        chain(3);
    }
    EXPECT_EQ(chains.deviation(), 0);
}

TEST_F(ChainStatisticsTest, RememberTheLongestChainsAndTheirBuckets)
{
    for (unsigned const length : {1u, 7u, 3u, 7u, 100u, 2u, 3u}) {
        chain(length);
    }
    EXPECT_EQ(chains.longest(),
              (std::vector<ChainStatistics::LongChain>{{100, 4}, {7, 1}, {7, 3}, {3, 2}, {3, 6}}));
    EXPECT_EQ(chains.lengths().rbegin()->first, 100u);
}

// What a walk calls.
class ChainCounterTest : public testing::Test
{
protected:
    void elements(unsigned bucket, unsigned count)
    {
        for (unsigned i = 0; i < count; ++i) {
            EXPECT_TRUE(counter.handleSlot(bucket, {}, nullptr, 0, false, 0));
        }
    }

    std::ostringstream out;
    WalkProgress::Clock::time_point time;
    ChainStatistics chains;
    WalkProgress progress{&out, 10000, [this] { return time += std::chrono::seconds(1); }};
    ChainCounter counter{chains, progress};
};

TEST_F(ChainCounterTest, CountsTheElementsOfEachChain)
{
    elements(0, 2);
    counter.done(0, {});
    counter.done(1, {});
    elements(2, 2);
    counter.done(2, {});
    EXPECT_EQ(chains.lengths(), (Lengths{{0, 1}, {2, 2}}));
    EXPECT_EQ(chains.longest(), (std::vector<ChainStatistics::LongChain>{{2, 0}, {2, 2}}));
}

TEST_F(ChainCounterTest, CountsAChainThatIsWalkedAgainAsItWasTheLastTime)
{
    elements(0, 5);
    counter.restart(0);
    elements(0, 2);
    counter.done(0, {});
    EXPECT_EQ(chains.lengths(), (Lengths{{2, 1}}));
    EXPECT_EQ(chains.elements(), 2u);
}

TEST_F(ChainCounterTest, ShowsItsProgressEveryFewThousandBuckets)
{
    for (unsigned bucket = 0; bucket < 10000; ++bucket) {
        counter.done(bucket, {});
    }
    EXPECT_EQ(out.str(),
              "4096 of 10000 buckets, 2 s left\033[K\r8192 of 10000 buckets, 1 s left\033[K\r");
}

}  // namespace
