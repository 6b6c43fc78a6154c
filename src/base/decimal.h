#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Dovan {

namespace Detail {

// The eight digits of a number below 100,000,000 as bytes of 0 to 9, the first in the lowest byte.
// The number is split in halves three times, all halves of a round by one multiplication: this
// takes a third of the time of taking digits off one by one.
constexpr std::uint64_t eightDigits(std::uint64_t number)
{
    std::uint64_t const halves = number / 10000 | (number % 10000) << 32;
    std::uint64_t const hundreds = (halves * 10486 >> 20) & 0x7f0000007f;
    std::uint64_t const quarters = hundreds | (halves - hundreds * 100) << 16;
    std::uint64_t const tens = (quarters * 103 >> 10) & 0x000f000f000f000f;
    return tens | (quarters - tens * 10) << 8;
}

constexpr std::uint64_t asciiZeros = 0x3030303030303030;

// Writes all eight digits.
inline char* writeEightDigits(char* out, std::uint64_t number)
{
    std::uint64_t const digits = eightDigits(number) + asciiZeros;
    std::memcpy(out, &digits, 8);
    return out + 8;
}

inline constexpr auto powersOfTen = [] {
    std::array<std::uint64_t, 20> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) {
        powers[i] = 10 * powers[i - 1];
    }
    return powers;
}();

// The number of a number's digits, at least one. It is there long before the digits, so that text
// that comes after them can be written in the meantime.
constexpr unsigned digitCount(std::uint64_t number)
{
    number |= 1;  // one digit for 0, and as many as before for any other
    // The logarithm of 2 is just above 1233 / 4096: this is the count or one less.
    auto const least = static_cast<unsigned>(std::bit_width(number)) * 1233 >> 12;
    return least + (number >= powersOfTen[least] ? 1 : 0);
}

// Writes the last `count` of the eight digits; overwrites eight characters.
inline char* writeLastDigits(char* out, std::uint64_t number, unsigned count)
{
    std::uint64_t const text = (eightDigits(number) + asciiZeros) >> (64 - 8 * count);
    std::memcpy(out, &text, 8);
    return out + count;
}

}  // namespace Detail

// Characters that writeDecimal() may overwrite, whatever the number.
constexpr unsigned decimalRoom = 1 + 24;

// Writes an integer in decimal, "-" before a negative one; the address after the last digit.
// `out` has room for decimalRoom characters.
template <typename Integer>
inline char* writeDecimal(char* out, Integer value)
{
    static_assert(std::is_integral_v<Integer> && sizeof(Integer) <= 8);
    constexpr std::uint64_t chunk = 100000000;
    // NOLINTNEXTLINE(bugprone-signed-char-misuse,cert-str34-c): the sign is to be extended.
    auto number = static_cast<std::uint64_t>(value);
    if constexpr (std::is_signed_v<Integer>) {
        if (value < 0) {
            *out++ = '-';
            number = 0 - number;
        }
    }
    unsigned const count = Detail::digitCount(number);
    if (count <= 8) {
        return Detail::writeLastDigits(out, number, count);
    }
    std::uint64_t const upper = number / chunk;
    if (count <= 16) {
        out = Detail::writeLastDigits(out, upper, count - 8);
    } else {
        out = Detail::writeLastDigits(out, upper / chunk, count - 16);
        out = Detail::writeEightDigits(out, upper % chunk);
    }
    return Detail::writeEightDigits(out, number % chunk);
}

}  // namespace Dovan
