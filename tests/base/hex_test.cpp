#include "base/hex.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

using Dovan::dumpHex;

TEST(DumpHex, NoBytesGiveAnEmptyText)
{
    EXPECT_EQ(dumpHex(nullptr, 0), "");
}

TEST(DumpHex, GroupsOfFourBytesAreSeparatedByOneSpace)
{
    unsigned char const bytes[] = {0x00, 0x11, 0xaa, 0xbb, 0x01, 0x02, 0x03, 0x04, 0xff};
    EXPECT_EQ(dumpHex(bytes, 1), "00");
    EXPECT_EQ(dumpHex(bytes, 3), "0011aa");
    EXPECT_EQ(dumpHex(bytes, 4), "0011aabb");
    EXPECT_EQ(dumpHex(bytes, 5), "0011aabb 01");
    EXPECT_EQ(dumpHex(bytes, 8), "0011aabb 01020304");
    EXPECT_EQ(dumpHex(bytes, 9), "0011aabb 01020304 ff");
}

TEST(DumpHex, AgreesWithFormattedOutputForEverySizeAndAlignment)
{
    std::mt19937 random(1);
    std::vector<unsigned char> bytes(300);
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(random());
    }
    for (unsigned start = 0; start < 17; ++start) {
        for (unsigned size = 0; size < 150; ++size) {
            std::string expected;
            for (unsigned i = 0; i < size; ++i) {
                char digits[3];
                std::snprintf(digits, sizeof digits, "%02x", bytes[start + i]);
                expected += (i > 0 && i % 4 == 0 ? " " : "") + std::string(digits);
            }
            ASSERT_EQ(dumpHex(&bytes[start], size), expected) << start << " " << size;
            ASSERT_EQ(Dovan::dumpHexLength(size), expected.size());
        }
    }
}

std::string hexOf(std::uint32_t value)
{
    char text[8];
    return {text, Dovan::writeHex(text, value)};
}

TEST(WriteHex, HasNoLeadingZeros)
{
    EXPECT_EQ(hexOf(0), "0");
    EXPECT_EQ(hexOf(10), "a");
    EXPECT_EQ(hexOf(0x1f), "1f");
    EXPECT_EQ(hexOf(255), "ff");
    EXPECT_EQ(hexOf(0x10), "10");
    EXPECT_EQ(hexOf(0xffffffff), "ffffffff");
    EXPECT_EQ(hexOf(0x9abcdef0), "9abcdef0");
}

TEST(WriteHex, AgreesWithFormattedOutputForEveryLength)
{
    std::mt19937 random(2);
    for (int i = 0; i < 100000; ++i) {
        auto const value = static_cast<std::uint32_t>(random()) >> (i % 32);
        char expected[9];
        std::snprintf(expected, sizeof expected, "%x", value);
        ASSERT_EQ(hexOf(value), expected);
    }
}

}  // namespace
