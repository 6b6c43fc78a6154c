#include "base/decimal.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace {

template <typename Integer>
std::string decimalOf(Integer value)
{
    char text[Dovan::decimalRoom];
    return {text, Dovan::writeDecimal(text, value)};
}

TEST(WriteDecimal, HasNoLeadingZeros)
{
    EXPECT_EQ(decimalOf(0), "0");
    EXPECT_EQ(decimalOf(7), "7");
    EXPECT_EQ(decimalOf(10), "10");
    EXPECT_EQ(decimalOf(-1), "-1");
    EXPECT_EQ(decimalOf(100000000), "100000000");
    EXPECT_EQ(decimalOf(99999999), "99999999");
    EXPECT_EQ(decimalOf(10000000000000000), "10000000000000000");
    EXPECT_EQ(decimalOf(9999999999999999), "9999999999999999");
}

TEST(WriteDecimal, HasOneMoreDigitFromEveryPowerOfTenOn)
{
    std::uint64_t power = 1;
    for (std::size_t digits = 1; digits <= 19; ++digits) {
        power *= 10;
        EXPECT_EQ(decimalOf(power - 1), std::string(digits, '9'));
        EXPECT_EQ(decimalOf(power), "1" + std::string(digits, '0'));
        EXPECT_EQ(decimalOf(power + 1), "1" + std::string(digits - 1, '0') + "1");
    }
}

template <typename Integer>
void expectLimits()
{
    using Limits = std::numeric_limits<Integer>;
    EXPECT_EQ(decimalOf(Limits::min()), std::to_string(Limits::min()));
    EXPECT_EQ(decimalOf(Limits::max()), std::to_string(Limits::max()));
}

TEST(WriteDecimal, CoversEveryWidthToItsLimits)
{
    expectLimits<std::int8_t>();
    expectLimits<std::uint8_t>();
    expectLimits<std::int16_t>();
    expectLimits<std::uint16_t>();
    expectLimits<std::int32_t>();
    expectLimits<std::uint32_t>();
    expectLimits<std::int64_t>();
    expectLimits<std::uint64_t>();
}

TEST(WriteDecimal, AgreesWithTheLibraryForEveryNumberOfDigits)
{
    std::mt19937_64 random(3);
    for (int i = 0; i < 200000; ++i) {
        std::uint64_t const value = random() >> (i % 64);
        ASSERT_EQ(decimalOf(value), std::to_string(value));
        auto const asSigned = static_cast<std::int64_t>(value);
        ASSERT_EQ(decimalOf(asSigned), std::to_string(asSigned));
    }
    for (std::uint64_t power = 1; power < 10000000000000000000u; power *= 10) {
        ASSERT_EQ(decimalOf(power), std::to_string(power));
        ASSERT_EQ(decimalOf(power - 1), std::to_string(power - 1));
    }
}

// The digits are split in groups of four, and each group by multiplications that must be exact.
TEST(WriteDecimal, IsExactForEveryGroupOfFourDigitsInEveryPlace)
{
    for (std::uint64_t place = 1; place <= 1000000000000; place *= 10000) {
        for (std::uint64_t group = 0; group < 10000; ++group) {
            ASSERT_EQ(decimalOf(group * place), std::to_string(group * place));
            std::uint64_t const amongNines = 9999999999999999 - group * place;
            ASSERT_EQ(decimalOf(amongNines), std::to_string(amongNines));
        }
    }
}

}  // namespace
