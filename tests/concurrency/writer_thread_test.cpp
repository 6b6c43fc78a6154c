// A writer and a walk in two threads of one process, for ThreadSanitizer to look at both: all words
// that they share go through atomics, so there is no race to report. It only knows where both
// have the files mapped at the same place, see one_mapping.cpp. What is read is checked, too.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <thread>
#include <vector>

#include "support/hot_writer.h"
#include "support/private_root.h"
#include "support/proving_values.h"
#include "table/quask_reader_generic.h"

namespace {

using QuaskTesting::bucketOfKey;
using QuaskTesting::HotTable;
using QuaskTesting::HotWriter;

// Counts what is not as it should be in the chains that were walked to their ends.
class Checker : public Quask::ScanHandler
{
public:
    Checker(unsigned valueSize, std::uint32_t buckets) : value_(valueSize), buckets_(buckets)
    {
        data = value_.data();
        size = valueSize;
    }

    bool handleSlot(unsigned bucket, Quask::SlotRef const& /*ref*/, unsigned char* valueBytes,
                    unsigned length, bool lookaside, unsigned /*sequence*/) override
    {
        checkValue(bucket, valueBytes, length);
        lookasideValues += lookaside ? 1 : 0;
        return true;
    }

    bool done(unsigned bucket, Quask::SlotRef const& /*ref*/) override
    {
        violations += violationsOfChain_;
        stable += stableOfChain_;
        ++chains;
        return restart(bucket);
    }

    bool restart(unsigned /*bucket*/) override
    {
        violationsOfChain_ = 0;
        stableOfChain_ = 0;
        return true;
    }

    unsigned violations = 0;
    unsigned stable = 0;  // stable elements in finished chains
    unsigned lookasideValues = 0;
    unsigned chains = 0;  // walked one by one
    unsigned batches = 0;

protected:
    void checkValue(unsigned bucket, unsigned char const* value, unsigned length)
    {
        auto const proven = QuaskTesting::provenBy(value, length);
        violationsOfChain_ += !proven || bucketOfKey(proven->key, buckets_) != bucket ? 1 : 0;
        stableOfChain_ += proven && QuaskTesting::isStableKey(proven->key) ? 1 : 0;
    }

private:
    std::vector<unsigned char> value_;
    std::uint32_t buckets_;
    unsigned violationsOfChain_ = 0;
    unsigned stableOfChain_ = 0;
};

// The same of a walk in batches.
class BatchChecker final : public Checker
{
public:
    using Checker::Checker;

    bool handleBatch(Quask::ChainBatch const& batch)
    {
        ++batches;
        batch.forEach([this](Quask::BatchElement const& element) {
            checkValue(element.bucket, element.value, size);
        });
        done(batch.firstBucket(), {});
        --chains;
        return true;
    }
};

// What all walks of a test have met.
struct Met
{
    std::uint64_t walks = 0;
    std::uint64_t lookasideValues = 0;
    std::uint64_t restarts = 0;
    std::uint64_t remaps = 0;
    std::uint64_t chains = 0;
    std::uint64_t batches = 0;

    // Of a walk one by one, and of one in batches, some of which are good.
    bool everything(HotTable const& table, bool inBatches) const
    {
        bool const difference =
            inBatches ? batches > 0 && chains > 0 : lookasideValues > 0 && restarts > 0;
        return walks >= 20 && difference && (remaps > 0 || table.maxSlots == 0);
    }
};

class WriterThread : public testing::Test
{
protected:
    // Walks until the walks have met everything, while a thread changes the table.
    template <typename AnyChecker = Checker>
    void expectSoundWalks(HotTable const& table)
    {
        Met met;
        while (!met.everything(table, Quask::BatchHandler<AnyChecker>) && !HasFailure()) {
            expectSoundWalksOfOneTable<AnyChecker>(table, met);
        }
    }

    // The same until the table has grown to its end, for one that grows.
    template <typename AnyChecker>
    void expectSoundWalksOfOneTable(HotTable const& table, Met& met)
    {
        bool const growing = table.maxSlots != 0;
        std::filesystem::remove_all(root.path() + "/hot");
        HotWriter writer(root.path() + "/hot", table);
        std::atomic<bool> stop = false;
        std::atomic<bool> isFull = false;
        std::thread thread([&] {
            for (unsigned i = 0; !stop.load(std::memory_order_relaxed); ++i) {
                writer.step();
                if (growing && i % 64 == 0 && !writer.addOne()) {
                    isFull.store(true, std::memory_order_relaxed);
                }
            }
        });
        while (!met.everything(table, Quask::BatchHandler<AnyChecker>) &&
               !isFull.load(std::memory_order_relaxed) && !HasFailure()) {
            walk<AnyChecker>(table, met);
        }
        stop = true;
        thread.join();
    }

    template <typename AnyChecker>
    static void walk(HotTable const& table, Met& met)
    {
        Quask::QuaskReaderGeneric reader("hot");
        std::string error;
        ASSERT_TRUE(reader.attach());
        ASSERT_TRUE(reader.validate(error)) << error;
        AnyChecker checker(table.valueSize, table.buckets);
        reader.scan(checker, 0, 0xffffffff, Quask::Direction::upward, true);
        ASSERT_EQ(checker.violations, 0u);
        ASSERT_EQ(checker.stable, table.stable);
        ++met.walks;
        met.lookasideValues += checker.lookasideValues;
        met.restarts += reader.chainRestarts();
        met.chains += checker.chains;
        met.batches += checker.batches;
        met.remaps += reader.readerStatistics().remaps;
    }

    QuaskTesting::PrivateRoot root;
};

TEST_F(WriterThread, ChangesSmallValuesDuringTheWalk)
{
    expectSoundWalks({.valueSize = 8, .buckets = 8, .stable = 100, .hot = 100});
}

TEST_F(WriterThread, ChangesValuesOfAnOddSizeDuringTheWalk)
{
    expectSoundWalks({.valueSize = 29, .buckets = 4, .stable = 50, .hot = 50});
}

TEST_F(WriterThread, ChangesLargeValuesDuringTheWalk)
{
    expectSoundWalks({.valueSize = 1000, .buckets = 4, .stable = 20, .hot = 20});
}

TEST_F(WriterThread, GrowsTheTableDuringTheWalk)
{
    expectSoundWalks({.valueSize = 8,
                      .buckets = 256,
                      .stable = 200,
                      .hot = 50,
                      .slots = 64,
                      .maxSlots = 100000});
}

// Most buckets have no element that changes, or no batch would be good.
TEST_F(WriterThread, ChangesSmallValuesDuringBatches)
{
    expectSoundWalks<BatchChecker>({.valueSize = 8, .buckets = 1024, .stable = 800, .hot = 8});
}

TEST_F(WriterThread, GrowsTheTableDuringBatches)
{
    expectSoundWalks<BatchChecker>({.valueSize = 29,
                                    .buckets = 1024,
                                    .stable = 800,
                                    .hot = 8,
                                    .slots = 64,
                                    .maxSlots = 100000});
}

}  // namespace
