// Which type names and sizes are known. What the texts look like is in value_printer_test.cpp.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "base/hex.h"
#include "support/value_printer.h"
#include "support/value_type.h"

namespace {

using Dovan::Platform::ElementType;
using Dovan::Platform::getValuePrinter;
using Dovan::Platform::ValuePrinter;

template <typename T>
std::string printAs(std::string const& typeName, T const& value)
{
    return getValuePrinter(typeName, static_cast<int>(sizeof value))->print(&value);
}

// The text of a value of `size` bytes 11 12 13 ..., in hexadecimal; at most 16.
std::string printCounting(std::string const& typeName, int size)
{
    std::array<unsigned char, 16> bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(0x11 + i);
    }
    return getValuePrinter(typeName, size)->print(bytes.data());
}

// Expects that a value of this size is not taken for one of the named type.
void expectHex(std::string const& typeName, int size)
{
    std::string const all = "11121314 15161718 191a1b1c 1d1e1f20";
    EXPECT_EQ(printCounting(typeName, size),
              all.substr(0, Dovan::dumpHexLength(static_cast<std::size_t>(size))))
        << typeName;
}

template <typename T>
void expectDecimal(std::initializer_list<char const*> typeNames)
{
    for (std::string const name : typeNames) {
        for (T const value : {std::numeric_limits<T>::min(), T(0), T(1), T(42), T(-1),
                              std::numeric_limits<T>::max()}) {
            EXPECT_EQ(printAs(name, value), std::to_string(value)) << name;
            EXPECT_EQ(printAs("std::" + name, value), std::to_string(value)) << name;
        }
        expectHex(name, static_cast<int>(sizeof(T)) + 1);
        expectHex(name, static_cast<int>(sizeof(T)) * 2);
        expectHex(name, static_cast<int>(sizeof(T)) - 1);
    }
}

// Values whose texts are as long as they can be, and any others.
TEST(ValuePrinterType, TheTextOfEveryTypeHasRoom)
{
    for (std::string const name :
         {"bool", "char", "float", "double", "int8_t", "int16_t", "int32_t", "int64_t", "uint8_t",
          "uint16_t", "uint32_t", "uint64_t", "Test::Blob"}) {
        for (unsigned const count : {1u, 2u, 7u, 32u}) {
            for (unsigned const elementSize : {1u, 2u, 4u, 8u}) {
                unsigned const size = count * elementSize;
                std::string const suffix = count == 1 ? "" : "[" + std::to_string(count) + "]";
                auto const& printer = *getValuePrinter(name + suffix, static_cast<int>(size));
                for (char const fill : {'\0', '\1', '\x80', '\xff', 'a'}) {
                    std::string const value(size, fill);
                    std::string text(ValuePrinter::textRoom(size), '.');
                    char const* const end =
                        printer.writeText(text.data(), text.size(), value.data());
                    EXPECT_EQ(std::string_view(text.data(), end), printer.print(value.data()))
                        << name << suffix;
                }
            }
        }
    }
}

TEST(ValuePrinterType, SignedIntegersAreDecimal)
{
    expectDecimal<signed char>({"signed char", "int8_t"});
    expectDecimal<short>({"short", "int16_t"});
    expectDecimal<int>({"int", "int32_t"});
    expectDecimal<long>({"long", "int64_t"});
    expectDecimal<long long>({"long long"});
}

TEST(ValuePrinterType, UnsignedIntegersAreDecimal)
{
    expectDecimal<unsigned char>({"unsigned char", "uint8_t", "unsigned int8_t"});
    expectDecimal<unsigned short>({"unsigned short", "uint16_t", "unsigned int16_t"});
    expectDecimal<unsigned>({"unsigned", "unsigned int", "uint32_t", "unsigned int32_t"});
    expectDecimal<unsigned long>({"unsigned long", "uint64_t", "unsigned int64_t"});
    expectDecimal<unsigned long long>({"unsigned long long"});
}

TEST(ValuePrinterType, EveryOtherTypeHasASizeOfItsOwn)
{
    expectHex("bool", 2);
    expectHex("char", 2);
    expectHex("char", 16);
    expectHex("float", 8);
    expectHex("double", 4);
    expectHex("double", 16);
}

TEST(ValuePrinterType, ALongHasTheSizeThatThePlatformGivesIt)
{
    EXPECT_EQ(printAs("long", std::int64_t{-5}), "-5");
    EXPECT_EQ(printAs("unsigned long", ~std::uint64_t{0}), "18446744073709551615");
    expectHex("long", 4);
}

TEST(ValuePrinterType, AnArrayWhoseElementsDoNotFillTheValueIsHexadecimal)
{
    expectHex("int[3]", 16);
    expectHex("int[3]", 8);
    expectHex("int[3]", 13);
    expectHex("int[3]", 4);
    expectHex("char[4]", 3);
    expectHex("double[2]", 8);
    expectHex("bool[4]", 5);
}

TEST(ValuePrinterType, TheNumberOfElementsHasNoLeadingZeroAndIsAtLeastOne)
{
    expectHex("int[03]", 12);
    expectHex("int[003]", 12);
    expectHex("int[0]", 0);
    expectHex("int[0]", 4);
    expectHex("char[0]", 0);
    expectHex("char[0]", 1);
    expectHex("int[-1]", 4);
    expectHex("int[+1]", 4);
}

TEST(ValuePrinterType, ANumberOfElementsBeyondEveryLimitIsNotTakenModuloAnything)
{
    expectHex("int[4294967299]", 12);
    expectHex("int[4611686018427387905]", 4);   // times 4 is 4 modulo 2^64
    expectHex("int[18446744073709551617]", 4);  // 1 modulo 2^64
    expectHex("char[340282366920938463463374607431768211457]", 1);
}

TEST(ValuePrinterType, AnythingElseAfterTheNameIsHexadecimal)
{
    for (char const* const name :
         {"int[3", "int 3]", "int3", "int[]", "int[3]x", "int[3] ", "int [3]", "int[ 3]", "int[3 ]",
          "int[3][1]", "int[1][3]", "int[3]]", "int[0x3]", "int[3u]", "int*", "int[3]&"}) {
        expectHex(name, 12);
    }
    expectHex("int[2][2]", 16);
    expectHex("char[4][4]", 16);
}

TEST(ValuePrinterType, TheNameIsMatchedWhole)
{
    for (char const* const name : {"", " ", "in", "int ", " int", "Int", "INT", "integer", "int32",
                                   "int32_t_", "int33_t", "const int", "[1]", "[4]"}) {
        expectHex(name, 4);
    }
    for (char const* const name : {"long int", "long  long", "long long long", "void*"}) {
        expectHex(name, 8);
    }
}

TEST(ValuePrinterType, OnlyOneStdMayComeFirstAndNowhereElse)
{
    for (char const* const name :
         {"std::std::int", "std::", "::int", "::std::int", "std:int", "stdint", "Std::int",
          "Quask::int", "std:: int", "unsigned std::int32_t", "std::[1]"}) {
        expectHex(name, 4);
    }
}

TEST(ValuePrinterType, OtherNamesOfTheLanguageAreHexadecimal)
{
    for (char const* const name :
         {"signed", "signed int", "wchar_t", "char32_t", "std::atomic<int>"}) {
        expectHex(name, 4);
    }
    for (char const* const name : {"char8_t", "std::byte", "signed  char"}) {
        expectHex(name, 1);
    }
    for (char const* const name : {"size_t", "std::uintptr_t", "unsigned long int"}) {
        expectHex(name, 8);
    }
    expectHex("long double", 16);
    expectHex("__int128", 16);
}

TEST(ValuePrinterType, NothingElseIsEverUnsigned)
{
    for (char const* const name : {"unsigned ", "unsigned  int", "unsignedint", "int unsigned",
                                   "unsigned uint32_t", "unsigned unsigned", "unsigned float"}) {
        expectHex(name, 4);
    }
    for (char const* const name :
         {"unsigned signed char", "signed unsigned char", "unsigned bool"}) {
        expectHex(name, 1);
    }
}

TEST(ValuePrinterType, ANameWithANulInsideIsNotKnown)
{
    expectHex(std::string("int\0", 4), 4);
    expectHex(std::string("int\0rubbish", 11), 4);
}

TEST(ValuePrinterType, AnUnknownTypeIsHexadecimal)
{
    for (int size = 0; size <= 16; ++size) {
        expectHex("Feed::Price", size);
    }
}

TEST(ValuePrinterType, AnEmptyValueHasAnEmptyText)
{
    expectHex("Quask::EmptyValue", 0);
    expectHex("Quask::EmptyValue", 1);
    for (char const* const name : {"int", "bool", "char", "char[1]", "double", "", "Feed::Price"}) {
        EXPECT_EQ(getValuePrinter(name, 0)->print(""), "") << name;
    }
}

TEST(ValuePrinterType, OnlyAPrinterOfOneElementSaysWhatItIs)
{
    EXPECT_EQ(getValuePrinter("long", 8)->element(), ElementType::int64);
    EXPECT_EQ(getValuePrinter("unsigned short", 2)->element(), ElementType::uint16);
    EXPECT_EQ(getValuePrinter("bool", 1)->element(), ElementType::boolean);
    EXPECT_EQ(getValuePrinter("char", 1)->element(), ElementType::character);
    EXPECT_EQ(getValuePrinter("float", 4)->element(), ElementType::float32);
    EXPECT_EQ(getValuePrinter("long[1]", 8)->element(), std::nullopt);
    EXPECT_EQ(getValuePrinter("char[8]", 8)->element(), std::nullopt);
    EXPECT_EQ(getValuePrinter("long", 4)->element(), std::nullopt);
    EXPECT_EQ(getValuePrinter("Feed::Price", 8)->element(), std::nullopt);
}

TEST(ValuePrinterType, ASizeBeyondTheSignedNumbersIsNotASmallOne)
{
    auto const* const printer = getValuePrinter("Feed::Price", static_cast<int>(0x80000001u));
    ASSERT_NE(printer, nullptr);
    EXPECT_NE(printer, getValuePrinter("Feed::Price", 0));
    EXPECT_NE(printer, getValuePrinter("Feed::Price", 1));
}

TEST(ValuePrinterType, ThereIsAPrinterOfTheLargestSize)
{
    ASSERT_NE(getValuePrinter("char[2147483647]", 2147483647), nullptr);
    ASSERT_NE(getValuePrinter("Feed::Price", 2147483647), nullptr);
}

TEST(ValuePrinterType, APrinterIsMadeOnceAndKept)
{
    struct
    {
        char const* typeName;
        int size;
    } const cases[] = {{"int", 4},   {"std::bool", 1},         {"char[7]", 7},  {"int[3]", 12},
                       {"Blob", 23}, {"Quask::EmptyValue", 0}, {"double[]", 8}, {"long", -1}};
    for (auto const& [typeName, size] : cases) {
        ValuePrinter const* const first = getValuePrinter(typeName, size);
        for (int other = 1; other < 1000; ++other) {
            getValuePrinter("char[" + std::to_string(other) + "]", other);
            getValuePrinter("int[" + std::to_string(other) + "]", 4 * other);
            getValuePrinter("Other", other);
        }
        EXPECT_EQ(getValuePrinter(typeName, size), first) << typeName;
    }
    EXPECT_EQ(getValuePrinter("Blob", 23), getValuePrinter("AnotherBlob", 23));
}

}  // namespace
