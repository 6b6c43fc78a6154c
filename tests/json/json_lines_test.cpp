// The lines of a scan: what they say of values of each type, and that batches give the same text as
// the same table walked one by one.

#include "json/json_lines.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "support/random_table.h"
#include "support/value_type.h"
#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;
using Quask::Json::JsonLines;

JsonLines linesOn(std::ostream& output, std::string_view type, std::uint32_t valueSize,
                  bool showEmpty)
{
    return {std::make_unique<unsigned char[]>(valueSize + 1), valueSize,
            Dovan::Platform::findValueType(type, valueSize), showEmpty, output};
}

// Hands the calls of a walk on to JsonLines, but takes no batches.
class OneByOne final : public Quask::ScanHandler
{
public:
    explicit OneByOne(JsonLines& lines) : lines_(lines)
    {
        data = lines.data;
        size = lines.size;
    }

    bool done(unsigned bucket, Quask::SlotRef const& ref) override
    {
        return lines_.done(bucket, ref);
    }

    bool handleSlot(unsigned bucket, Quask::SlotRef const& ref, unsigned char* valueBytes,
                    unsigned length, bool lookaside, unsigned sequence) override
    {
        return lines_.handleSlot(bucket, ref, valueBytes, length, lookaside, sequence);
    }

    bool restart(unsigned bucket) override { return lines_.restart(bucket); }

private:
    JsonLines& lines_;
};

// Counts the batches that it hands on.
class Counting final : public Quask::ScanHandler
{
public:
    explicit Counting(JsonLines& lines) : lines_(lines), calls_(lines)
    {
        data = lines.data;
        size = lines.size;
    }

    bool done(unsigned bucket, Quask::SlotRef const& ref) override
    {
        return calls_.done(bucket, ref);
    }

    bool handleSlot(unsigned bucket, Quask::SlotRef const& ref, unsigned char* valueBytes,
                    unsigned length, bool lookaside, unsigned sequence) override
    {
        return calls_.handleSlot(bucket, ref, valueBytes, length, lookaside, sequence);
    }

    bool restart(unsigned bucket) override { return calls_.restart(bucket); }

    bool handleBatch(Quask::ChainBatch const& batch)
    {
        ++batches;
        return lines_.handleBatch(batch);
    }

    unsigned batches = 0;

private:
    JsonLines& lines_;
    OneByOne calls_;
};

class JsonLinesTest : public WalkFixture
{
protected:
    // The lines of the table, or of its buckets from `first` on, in batches or one by one.
    std::string textOf(bool inBatches, bool showEmpty, unsigned first = 0)
    {
        std::ostringstream output;
        JsonLines lines =
            linesOn(output, image.slotsHeader.valueType, image.slotsHeader.valueSize, showEmpty);
        if (inBatches) {
            Counting counting(lines);
            walkWith(counting, first, 70);
            EXPECT_GT(counting.batches, 0u);
        } else {
            OneByOne oneByOne(lines);
            walkWith(oneByOne, first, 70);
        }
        return output.str();
    }

    void expectTheSame(RandomTable const& table)
    {
        image = table.image();
        open();
        for (unsigned first = 0; first < table.buckets; first += 70) {
            for (bool const showEmpty : {false, true}) {
                EXPECT_EQ(textOf(true, showEmpty, first), textOf(false, showEmpty, first))
                    << table.valueType << " from " << first;
            }
        }
    }

    // The element of a table that has no other, from `{"slot":0` on, is the text, in a batch as in
    // a walk.
    void expectElement(std::string_view type, std::string_view bytes, std::string const& text)
    {
        auto const size = static_cast<std::uint32_t>(bytes.size());
        image = TableImage::of(type, size).buckets(70).chain(4, {{0, bytes}});
        open();
        std::string const line =
            "{\"bucket\":4,\"elements\":[{\"slot\":0," + text + ",\"lookaside\":false}]}\n";
        EXPECT_EQ(textOf(true, false), line) << type;
        EXPECT_EQ(textOf(false, false), line) << type;
    }

    template <typename T>
    void expectElement(std::string_view type, T const& value,
                       std::string const& text) requires(!std::convertible_to<T, std::string_view>)
    {
        expectElement(type, bytesOf(value), text);
    }
};

TEST_F(JsonLinesTest, ABatchGivesTheSameTextForValuesOfAnySize)
{
    for (std::uint32_t const valueSize : {0u, 1u, 3u, 4u, 7u, 8u, 12u, 13u, 64u, 255u, 256u}) {
        expectTheSame({"Test::Blob", valueSize, 140, 200, valueSize});
    }
}

TEST_F(JsonLinesTest, ABatchGivesTheSameTextForValuesOfAnyType)
{
    expectTheSame({"bool", 1, 140, 200, 1});
    expectTheSame({"char", 1, 140, 200, 2});
    expectTheSame({"float", 4, 140, 200, 3});
    expectTheSame({"double", 8, 140, 200, 4});
    expectTheSame({"int8_t", 1, 140, 200, 5});
    expectTheSame({"int16_t", 2, 140, 200, 6});
    expectTheSame({"std::int64_t", 8, 140, 200, 7});
    expectTheSame({"unsigned", 4, 140, 200, 8});
    expectTheSame({"bool[256]", 256, 140, 200, 9});
    expectTheSame({"double[4]", 32, 140, 200, 10});
    expectTheSame({"int8_t[256]", 256, 140, 200, 11});
}

// A value may end within a character, which the next value must not complete.
TEST_F(JsonLinesTest, ABatchGivesTheSameTextForTextsThatBreakOff)
{
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        expectTheSame({"char[3]", 3, 140, 300, seed});
    }
    image = TableImage::of("char[1]", 1).buckets(70).chain(0, {{0, "\xc3"}, {1, "\xa4"}});
    open();
    EXPECT_EQ(textOf(true, false),
              R"({"bucket":0,"elements":[{"slot":0,"value":"\uFFFD","hex":"c3","lookaside":false},)"
              R"({"slot":1,"value":"\uFFFD","hex":"a4","lookaside":false}]})"
              "\n");
}

TEST_F(JsonLinesTest, ABatchGivesTheSameTextForTablesOfAnyDensity)
{
    for (std::uint32_t const elements : {0u, 1u, 30u, 300u, 1000u}) {
        expectTheSame({"int", 4, 140, elements, elements});
    }
}

TEST_F(JsonLinesTest, ABatchGivesTheSameTextForBucketNumbersOfAnyLength)
{
    image = RandomTable{"int", 4, 100100, 50000, 1}.image();
    open();
    for (unsigned const first : {0u, 3u, 61u, 448u, 930u, 999u, 9937u, 9990u, 99999u, 100030u}) {
        EXPECT_EQ(textOf(true, true, first), textOf(false, true, first)) << first;
    }
}

TEST_F(JsonLinesTest, ALineHasAllElementsOfABucketInTheOrderOfTheChain)
{
    image = TableImage::of("int", 4)
                .buckets(66)
                .chain(0, {{1, bytesOf(-5)}, {0, bytesOf(12)}})
                .chain(65, {{2, bytesOf(7)}});
    open();
    std::string const text =
        R"({"bucket":0,"elements":[{"slot":1,"value":-5,"hex":"fbffffff","lookaside":false},)"
        R"({"slot":0,"value":12,"hex":"0c000000","lookaside":false}]})"
        "\n"
        R"({"bucket":65,"elements":[{"slot":2,"value":7,"hex":"07000000","lookaside":false}]})"
        "\n";
    EXPECT_EQ(textOf(true, false), text);
    EXPECT_EQ(textOf(false, false), text);
}

TEST_F(JsonLinesTest, AnEmptyBucketHasALineOnlyIfAskedFor)
{
    image = TableImage::of("int", 4).buckets(2);
    open();
    EXPECT_EQ(textOf(true, false), "");
    EXPECT_EQ(textOf(true, true),
              "{\"bucket\":0,\"elements\":[]}\n{\"bucket\":1,\"elements\":[]}\n");
}

TEST_F(JsonLinesTest, AValueThatIsBeingRewrittenIsMarked)
{
    image = TableImage::of("int", 4)
                .buckets(1)
                .chain(0, {{0, bytesOf(1)}})
                .rewriting(0, bytesOf(5), bytesOf(9));
    open();
    EXPECT_EQ(textOf(false, false),
              R"({"bucket":0,"elements":[{"slot":0,"value":5,"hex":"05000000","lookaside":true}]})"
              "\n");
}

TEST_F(JsonLinesTest, ALineThatIsRestartedShowsNothingReadBefore)
{
    std::ostringstream output;
    JsonLines lines = linesOn(output, "int", 4, false);
    std::array<unsigned char, 5> value{1};
    auto const handle = [&](unsigned slot) {
        lines.handleSlot(4, {.version = 0, .index = slot}, value.data(), 4, false, 0);
    };
    handle(7);
    lines.restart(4);
    handle(8);
    lines.done(4, {.version = 0, .index = Quask::SlotRef::null});
    EXPECT_EQ(output.str(),
              R"({"bucket":4,"elements":[{"slot":8,"value":1,"hex":"01000000","lookaside":false}]})"
              "\n");
}

TEST_F(JsonLinesTest, AnIntegerOfAnyWidthIsExact)
{
    expectElement("int8_t", std::int8_t{-128}, R"("value":-128,"hex":"80")");
    expectElement("uint8_t", std::uint8_t{255}, R"("value":255,"hex":"ff")");
    expectElement("int16_t", std::int16_t{-32768}, R"("value":-32768,"hex":"0080")");
    expectElement("uint16_t", std::uint16_t{65535}, R"("value":65535,"hex":"ffff")");
    expectElement("int32_t", std::int32_t{-2147483647}, R"("value":-2147483647,"hex":"01000080")");
    expectElement("uint32_t", 4294967295u, R"("value":4294967295,"hex":"ffffffff")");
    expectElement("int64_t", std::numeric_limits<std::int64_t>::min(),
                  R"("value":-9223372036854775808,"hex":"0000000000000080")");
    expectElement("uint64_t", std::numeric_limits<std::uint64_t>::max(),
                  R"("value":18446744073709551615,"hex":"ffffffffffffffff")");
}

TEST_F(JsonLinesTest, AFloatingPointNumberIsTheShortestTextThatReadsTheSame)
{
    expectElement("float", 0.1f, R"("value":0.1,"hex":"cdcccc3d")");
    expectElement("double", -0.0, R"("value":-0,"hex":"0000000000000080")");
    expectElement("double", -std::numeric_limits<double>::min(),
                  R"("value":-2.2250738585072014e-308,"hex":"0000000000001080")");
}

TEST_F(JsonLinesTest, ANumberThatIsNotFiniteIsNull)
{
    using Double = std::numeric_limits<double>;
    expectElement("double", Double::quiet_NaN(), R"("value":null,"hex":"000000000000f87f")");
    expectElement("double", Double::infinity(), R"("value":null,"hex":"000000000000f07f")");
    expectElement("float", -std::numeric_limits<float>::infinity(),
                  R"("value":null,"hex":"000080ff")");
    expectElement("double[2]", std::array{-Double::infinity(), 1.5},
                  R"("value":[null,1.5],"hex":"000000000000f0ff000000000000f83f")");
}

TEST_F(JsonLinesTest, ATruthValueIsFalseOnlyIfItIsZero)
{
    expectElement("bool", std::uint8_t{0}, R"("value":false,"hex":"00")");
    expectElement("bool", std::uint8_t{2}, R"("value":true,"hex":"02")");
    expectElement("bool[2]", std::string_view("\1\0", 2), R"("value":[true,false],"hex":"0100")");
}

TEST_F(JsonLinesTest, AnArrayOfNumbersIsAnArray)
{
    expectElement("int16_t[3]", std::array<std::int16_t, 3>{1, -2, 300},
                  R"("value":[1,-2,300],"hex":"0100feff2c01")");
    expectElement("int[1]", 7, R"("value":[7],"hex":"07000000")");
}

TEST_F(JsonLinesTest, CharactersAreAStringUpToTheFirstNul)
{
    expectElement("char[5]", std::string_view("ab\0cd", 5), R"("value":"ab","hex":"6162006364")");
    expectElement("char[2]", std::string_view("xy"), R"("value":"xy","hex":"7879")");
    expectElement("char", std::string_view("x"), R"("value":"x","hex":"78")");
    expectElement("char", std::string_view("\0", 1), R"("value":"\u0000","hex":"00")");
}

TEST_F(JsonLinesTest, CharactersAreEscaped)
{
    expectElement("char[5]", std::string_view("\"\\\n\x01/"),
                  R"("value":"\"\\\n\u0001/","hex":"225c0a012f")");
    expectElement("char[6]", std::string_view("\xc3\xa4\xf0\x9f\x90\x84"),
                  R"("value":"\u00E4\uD83D\uDC04","hex":"c3a4f09f9084")");
}

TEST_F(JsonLinesTest, BytesThatAreNotUtf8AreReplaced)
{
    expectElement("char[3]",
                  std::string_view("a\xff"
                                   "b"),
                  R"("value":"a\uFFFDb","hex":"61ff62")");
    expectElement("char[2]", std::string_view("\xe2\x82"), R"("value":"\uFFFD","hex":"e282")");
    expectElement("char[3]", std::string_view("\xed\xa0\x80"),
                  R"("value":"\uFFFD\uFFFD\uFFFD","hex":"eda080")");
    expectElement("char", std::string_view("\xc3"), R"("value":"\uFFFD","hex":"c3")");
}

TEST_F(JsonLinesTest, TheFirstAndTheLastCharacterOfEachLengthAreRead)
{
    expectElement("char[4]", std::string_view("\xc2\x80\xdf\xbf"),
                  R"("value":"\u0080\u07FF","hex":"c280dfbf")");
    expectElement("char[6]", std::string_view("\xe0\xa0\x80\xef\xbf\xbf"),
                  R"("value":"\u0800\uFFFF","hex":"e0a080efbfbf")");
    expectElement("char[6]", std::string_view("\xed\x9f\xbf\xee\x80\x80"),
                  R"("value":"\uD7FF\uE000","hex":"ed9fbfee8080")");
    expectElement("char[8]", std::string_view("\xf0\x90\x80\x80\xf4\x8f\xbf\xbf"),
                  R"("value":"\uD800\uDC00\uDBFF\uDFFF","hex":"f0908080f48fbfbf")");
}

TEST_F(JsonLinesTest, ASequenceThatIsLongerThanItsCharacterNeedsIsReplaced)
{
    expectElement("char[2]", std::string_view("\xc1\xbf"),
                  R"("value":"\uFFFD\uFFFD","hex":"c1bf")");
    expectElement("char[3]", std::string_view("\xe0\x9f\xbf"),
                  R"("value":"\uFFFD\uFFFD\uFFFD","hex":"e09fbf")");
    expectElement("char[4]", std::string_view("\xf0\x8f\xbf\xbf"),
                  R"("value":"\uFFFD\uFFFD\uFFFD\uFFFD","hex":"f08fbfbf")");
}

TEST_F(JsonLinesTest, ASequenceBeyondTheLastCharacterIsReplaced)
{
    expectElement("char[4]", std::string_view("\xf4\x90\x80\x80"),
                  R"("value":"\uFFFD\uFFFD\uFFFD\uFFFD","hex":"f4908080")");
    expectElement("char[4]", std::string_view("\xf5\x80\x80\x80"),
                  R"("value":"\uFFFD\uFFFD\uFFFD\uFFFD","hex":"f5808080")");
}

TEST_F(JsonLinesTest, AValueOfAnotherTypeHasItsBytesOnly)
{
    expectElement("Test::Quote", std::string_view("\1\2\3"), R"("hex":"010203")");
    expectElement("int", std::string_view("\1\2"), R"("hex":"0102")");
}

}  // namespace
