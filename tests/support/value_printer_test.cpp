#include "support/value_printer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <ostream>
#include <random>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Dovan::TextBuffer;
using Dovan::Platform::getValuePrinter;
using Dovan::Platform::ValuePrinter;

std::string printBytes(std::string const& typeName, std::string_view bytes)
{
    return getValuePrinter(typeName, static_cast<int>(bytes.size()))->print(bytes.data());
}

template <typename T>
std::string printAs(std::string const& typeName, T const& value)
{
    return getValuePrinter(typeName, static_cast<int>(sizeof value))->print(&value);
}

TEST(ValuePrinter, ABoolIsFalseOnlyWhenItsByteIsZero)
{
    EXPECT_EQ(printBytes("bool", {"\0", 1}), "false");
    EXPECT_EQ(printBytes("bool", "\x01"), "true");
    EXPECT_EQ(printBytes("bool", "\x02"), "true");
    EXPECT_EQ(printBytes("std::bool", "\xff"), "true");
}

TEST(ValuePrinter, ACharIsInSingleQuotes)
{
    EXPECT_EQ(printBytes("char", "a"), "'a'");
    EXPECT_EQ(printBytes("std::char", " "), "' '");
    EXPECT_EQ(printBytes("char", "~"), "'~'");
}

TEST(ValuePrinter, ASingleQuoteAndABackslashAreEscapedInACharButNoDoubleQuote)
{
    EXPECT_EQ(printBytes("char", "'"), R"('\'')");
    EXPECT_EQ(printBytes("char", "\\"), R"('\\')");
    EXPECT_EQ(printBytes("char", "\""), R"('"')");
}

TEST(ValuePrinter, AControlCharacterIsEscapedInAChar)
{
    EXPECT_EQ(printBytes("char", "\n"), R"('\n')");
    EXPECT_EQ(printBytes("char", "\t"), R"('\t')");
    EXPECT_EQ(printBytes("char", "\r"), R"('\r')");
    EXPECT_EQ(printBytes("char", {"\0", 1}), R"('\x00')");
    EXPECT_EQ(printBytes("char", "\x1f"), R"('\x1f')");
    EXPECT_EQ(printBytes("char", "\x7f"), R"('\x7f')");
    EXPECT_EQ(printBytes("char", "\xc3"), R"('\xc3')");
}

TEST(ValuePrinter, ATextEndsAtTheFirstNul)
{
    EXPECT_EQ(printBytes("char[16]", {"plain\0rubbish\xff\xff\xff", 16}), R"("plain")");
    EXPECT_EQ(printBytes("char[3]", {"\0ab", 3}), R"("")");
}

TEST(ValuePrinter, ATextWithoutANulEndsAfterItsLastByte)
{
    std::string const bytes = "abcdefgh";
    EXPECT_EQ(getValuePrinter("char[4]", 4)->print(bytes.data()), R"("abcd")");
    EXPECT_EQ(printBytes("char[1]", "x"), R"("x")");
    EXPECT_EQ(printBytes("std::char[2]", "xy"), R"("xy")");
}

TEST(ValuePrinter, ADoubleQuoteAndABackslashAreEscapedInATextButNoSingleQuote)
{
    EXPECT_EQ(printBytes("char[7]", R"("a"'b'\)"), R"("\"a\"'b'\\")");
}

TEST(ValuePrinter, ATextIsOneLineOfPrintableCharacters)
{
    EXPECT_EQ(printBytes("char[11]", "\n\t\r\x01\x1f \x7f\x80\xff~\x0b"),
              R"("\n\t\r\x01\x1f \x7f\x80\xff~\x0b")");
}

TEST(ValuePrinter, EveryByteOfATextMayNeedFourCharacters)
{
    std::string expected;
    for (int i = 0; i < 100000; ++i) {
        expected += R"(\xfe)";
    }
    EXPECT_EQ(printBytes("char[100000]", std::string(100000, '\xfe')), '"' + expected + '"');
}

TEST(ValuePrinter, FloatingPointNumbersHaveTheShortestTextThatReadsBack)
{
    EXPECT_EQ(printAs("double", 0.1), "0.1");
    EXPECT_EQ(printAs("double", 1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(printAs("double", 1234.5), "1234.5");
    EXPECT_EQ(printAs("double", 100000.0), "1e+05");
    EXPECT_EQ(printAs("double", 1e22), "1e+22");
    EXPECT_EQ(printAs("double", -2.5e-7), "-2.5e-07");
    EXPECT_EQ(printAs("double", -0.0), "-0");
    EXPECT_EQ(printAs("float", 0.1f), "0.1");
    EXPECT_EQ(printAs("float", 16777216.0f), "16777216");
    EXPECT_EQ(printAs("std::float", -1.5f), "-1.5");
}

TEST(ValuePrinter, TheLongestFloatingPointTextsAreWhole)
{
    EXPECT_EQ(printAs("double", -std::numeric_limits<double>::max()), "-1.7976931348623157e+308");
    EXPECT_EQ(printAs("double", -std::numeric_limits<double>::min()), "-2.2250738585072014e-308");
    EXPECT_EQ(printAs("double", std::numeric_limits<double>::denorm_min()), "5e-324");
    EXPECT_EQ(printAs("float", -std::numeric_limits<float>::max()), "-3.4028235e+38");
    EXPECT_EQ(printAs("float", -std::numeric_limits<float>::min()), "-1.1754944e-38");
}

TEST(ValuePrinter, ValuesThatAreNotNumbersHaveNames)
{
    EXPECT_EQ(printAs("double", std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(printAs("double", -std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(printAs("double", std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(printAs("float", -std::numeric_limits<float>::quiet_NaN()), "-nan");
    EXPECT_EQ(printAs("double", std::uint64_t{0x7ff0000000000001}), "nan");
}

template <typename T, typename Bits>
void expectReadsBack(std::string const& typeName)
{
    std::mt19937_64 random(1);
    for (int i = 0; i < 100000; ++i) {
        auto const value = std::bit_cast<T>(static_cast<Bits>(random()));
        if (value != value) {
            continue;
        }
        std::string const text = printAs(typeName, value);
        T readBack = 0;
        auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), readBack);
        ASSERT_EQ(error, std::errc()) << text;
        ASSERT_EQ(end, text.data() + text.size()) << text;
        ASSERT_EQ(std::bit_cast<Bits>(readBack), std::bit_cast<Bits>(value)) << text;
    }
}

TEST(ValuePrinter, AnyFloatingPointNumberReadsBack)
{
    expectReadsBack<float, std::uint32_t>("float");
    expectReadsBack<double, std::uint64_t>("double");
}

TEST(ValuePrinter, AnArrayIsInBraces)
{
    EXPECT_EQ(printAs("int[3]", std::array{1, -2, 3}), "{1, -2, 3}");
    EXPECT_EQ(printAs("std::int32_t[1]", 7), "{7}");
    EXPECT_EQ(printAs("double[3]", std::array{0.5, -1e300, 2.0}), "{0.5, -1e+300, 2}");
    EXPECT_EQ(printAs("unsigned long long[2]", std::array{~0ull, 0ull}),
              "{18446744073709551615, 0}");
    EXPECT_EQ(printAs("unsigned[2]", std::array{~0u, 0u}), "{4294967295, 0}");
    EXPECT_EQ(printBytes("bool[4]", {"\0\1\2\0", 4}), "{false, true, true, false}");
}

TEST(ValuePrinter, OnlyPlainCharactersMakeAText)
{
    EXPECT_EQ(printBytes("signed char[3]", "a\xff!"), "{97, -1, 33}");
    EXPECT_EQ(printBytes("unsigned char[3]", "a\xff!"), "{97, 255, 33}");
    EXPECT_EQ(printBytes("uint8_t[3]", {"\0a\0", 3}), "{0, 97, 0}");
}

TEST(ValuePrinter, AnArrayOfTenAndMoreElementsIsOne)
{
    EXPECT_EQ(printBytes("int8_t[10]", "\1\2\3\4\5\6\7\10\11\12"),
              "{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}");
    std::string expected = "{-9223372036854775808";
    for (int i = 1; i < 100000; ++i) {
        expected += ", -9223372036854775808";
    }
    std::vector<std::int64_t> const values(100000, std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(getValuePrinter("long[100000]", 800000)->print(values.data()), expected + "}");
}

TEST(ValuePrinter, AValueNeedsNoAlignment)
{
    alignas(8) std::array<unsigned char, 17> bytes{};
    double const value = 1.25;
    std::memcpy(&bytes[1], &value, sizeof value);
    std::memcpy(&bytes[9], &value, sizeof value);
    EXPECT_EQ(getValuePrinter("double", 8)->print(&bytes[1]), "1.25");
    EXPECT_EQ(getValuePrinter("double[2]", 16)->print(&bytes[1]), "{1.25, 1.25}");
}

TEST(ValuePrinter, AppendsAfterWhatTheBufferHolds)
{
    struct
    {
        char const* typeName;
        std::string_view bytes;
    } const cases[] = {
        {"bool", "\x01"},          {"char", "a"},
        {"unsigned char", "\x07"}, {"float", "\x01\x02\x03\x04"},
        {"char[3]", "a\"c"},       {"int8_t[2]", "ab"},
        {"Feed::Price", "abcdef"}, {"Quask::EmptyValue", ""},
    };
    for (auto const& [typeName, bytes] : cases) {
        ValuePrinter const* const printer =
            getValuePrinter(typeName, static_cast<int>(bytes.size()));
        TextBuffer text;
        text.append("3-->");
        printer->append(text, bytes.data());
        text.append("|");
        printer->append(text, bytes.data());
        std::string const expected = printer->print(bytes.data());
        EXPECT_EQ(text.view(), "3-->" + expected + "|" + expected) << typeName;
    }
}

TEST(ValuePrinter, AppendingGrowsTheBufferAtEveryFill)
{
    std::int64_t const value = std::numeric_limits<std::int64_t>::min();
    for (std::size_t filled = 4060; filled < 4100; ++filled) {
        TextBuffer text;
        text.append(std::string(filled, '-'));
        getValuePrinter("long", 8)->append(text, &value);
        ASSERT_EQ(text.view().substr(filled), "-9223372036854775808");
        getValuePrinter("char[8]", 8)->append(text, &value);
        getValuePrinter("long[1]", 8)->append(text, &value);
        getValuePrinter("x", 8)->append(text, &value);
        ASSERT_EQ(text.view().substr(filled + 20), R"(""{-9223372036854775808}00000000 00000080)");
    }
}

// What writeTo() writes, in how many pieces.
struct Written
{
    std::string text;
    std::size_t pieces = 0;
    std::size_t longestPiece = 0;
};

Written writeBytes(std::string const& typeName, std::string_view bytes)
{
    struct Pieces final : std::streambuf
    {
        std::streamsize xsputn(char const* text, std::streamsize count) override
        {
            auto const size = static_cast<std::size_t>(count);
            written.text.append(text, size);
            ++written.pieces;
            written.longestPiece = std::max(written.longestPiece, size);
            return count;
        }
        Written written;
    };
    Pieces pieces;
    std::ostream out(&pieces);
    getValuePrinter(typeName, static_cast<int>(bytes.size()))->writeTo(out, bytes.data());
    return pieces.written;
}

std::string manyBytes(std::size_t size)
{
    std::minstd_rand random(7);
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random() % 255 + 1);
    }
    return bytes;
}

TEST(ValuePrinter, WritesTheSameTextInPieces)
{
    constexpr std::size_t part = 32768;
    for (std::size_t const size : {part - 8, part, part + 8, 2 * part, 10 * part + 24}) {
        std::string const bytes = manyBytes(size);
        for (std::string const& type :
             {std::string("Feed::Book"), "char[" + std::to_string(size) + "]",
              "bool[" + std::to_string(size) + "]", "double[" + std::to_string(size / 8) + "]",
              "int16_t[" + std::to_string(size / 2) + "]"}) {
            Written const written = writeBytes(type, bytes);
            EXPECT_TRUE(written.text == printBytes(type, bytes)) << type << " of " << size;
            EXPECT_EQ(written.pieces, (size + part - 1) / part) << type << " of " << size;
            EXPECT_LE(written.longestPiece, 8 * part);
        }
    }
}

TEST(ValuePrinter, WritesSmallValuesInOnePiece)
{
    EXPECT_EQ(writeBytes("int", {"\xf9\xff\xff\xff", 4}).text, "-7");
    EXPECT_EQ(writeBytes("Feed::Book", "").text, "");
    EXPECT_EQ(writeBytes("char[3]", "abc").pieces, 1u);
}

TEST(ValuePrinter, WritesATextUpToTheFirstNulWhereverItIs)
{
    constexpr std::size_t part = 32768;
    std::string const text(3 * part, 'a');
    for (std::size_t const nul : {std::size_t{0}, part - 1, part, part + 1, 3 * part - 1}) {
        std::string bytes = text;
        bytes[nul] = '\0';
        EXPECT_TRUE(writeBytes("char[98304]", bytes).text == '"' + text.substr(0, nul) + '"')
            << nul;
    }
}

}  // namespace
