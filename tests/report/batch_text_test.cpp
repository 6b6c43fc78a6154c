// The text of batches is that of the same table walked one by one.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "report/quask_textify.h"
#include "support/random_table.h"
#include "support/value_printer.h"
#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;
using Quask::QuaskTextify;

class ChainByChain : public QuaskTextify
{
public:
    ChainByChain(RandomTable const& table, Style shown, bool showEmpty)
        : QuaskTextify(std::make_unique<unsigned char[]>(table.valueSize), table.valueSize, shown,
                       Dovan::Platform::getValuePrinter(std::string(table.valueType),
                                                        static_cast<int>(table.valueSize)),
                       "type", showEmpty)
    {}

    bool handleLineString(unsigned /*bucket*/, std::string_view line) override
    {
        text += line;
        return true;
    }

    std::string text;
};

class BatchText final : public ChainByChain
{
public:
    using ChainByChain::ChainByChain;

    bool handleBatch(Quask::ChainBatch const& batch)
    {
        addLines(batch);
        text += chain.view();
        chain.clear();
        ++batches;
        return true;
    }

    unsigned batches = 0;
};

class BatchTextTest : public WalkFixture
{
protected:
    void expectTheSame(RandomTable const& table)
    {
        image = table.image();
        open();
        for (auto const style : {QuaskTextify::Plain, QuaskTextify::Pretty}) {
            for (bool const showEmpty : {false, true}) {
                ChainByChain oneByOne(table, style, showEmpty);
                walkWith(oneByOne);
                BatchText inBatches(table, style, showEmpty);
                walkWith(inBatches);
                EXPECT_EQ(inBatches.text, oneByOne.text) << table.valueType;
                EXPECT_EQ(inBatches.batches, (table.buckets + 63) / 64) << table.valueType;
            }
        }
    }
};

TEST_F(BatchTextTest, IsTheSameForValuesOfAnySize)
{
    for (std::uint32_t const valueSize : {0u, 1u, 4u, 5u, 8u, 12u, 13u, 64u, 255u, 256u}) {
        expectTheSame({"Test::Blob", valueSize, 130, 200, valueSize});
    }
}

TEST_F(BatchTextTest, IsTheSameForValuesOfAnyType)
{
    expectTheSame({"bool", 1, 130, 200, 1});
    expectTheSame({"char", 1, 130, 200, 2});
    expectTheSame({"double", 8, 130, 200, 3});
    expectTheSame({"float", 4, 130, 200, 3});
    expectTheSame({"int8_t", 1, 130, 200, 4});
    expectTheSame({"short", 2, 130, 200, 4});
    expectTheSame({"int", 4, 130, 200, 4});
    expectTheSame({"std::int64_t", 8, 130, 200, 4});
    expectTheSame({"uint8_t", 1, 130, 200, 5});
    expectTheSame({"uint16_t", 2, 130, 200, 5});
    expectTheSame({"unsigned", 4, 130, 200, 5});
    expectTheSame({"uint64_t", 8, 130, 200, 5});
    expectTheSame({"bool[256]", 256, 130, 200, 6});
    expectTheSame({"char[100]", 100, 130, 200, 7});
    expectTheSame({"double[4]", 32, 130, 200, 8});
    expectTheSame({"int8_t[256]", 256, 130, 200, 9});
}

TEST_F(BatchTextTest, IsTheSameForTablesOfAnyDensity)
{
    for (std::uint32_t const elements : {0u, 1u, 30u, 300u, 2000u}) {
        expectTheSame({"Test::Blob", 8, 250, elements, elements});
    }
}

TEST_F(BatchTextTest, IsTheSameForBucketNumbersOfAnyLength)
{
    expectTheSame({"Test::Blob", 8, 66000, 5000, 1});
}

// The first batch begins in the middle of those buckets whose heads differ in one digit only.
TEST_F(BatchTextTest, IsTheSameFromAnyBucketOn)
{
    RandomTable const table{"Test::Blob", 8, 300, 300, 1};
    image = table.image();
    open();
    for (unsigned first = 0; first < 300; first += 7) {
        ChainByChain oneByOne(table, QuaskTextify::Plain, true);
        walkWith(oneByOne, first, 70);
        BatchText inBatches(table, QuaskTextify::Plain, true);
        walkWith(inBatches, first, 70);
        EXPECT_EQ(inBatches.text, oneByOne.text) << first;
        EXPECT_GT(inBatches.batches, 0u) << first;
    }
}

}  // namespace
