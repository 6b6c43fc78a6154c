#pragma once

#include <bit>
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

// Writes the digits behind the leading zeros, at least one; overwrites eight characters.
inline char* writeSomeDigits(char* out, std::uint64_t number)
{
    std::uint64_t const digits = eightDigits(number);
    // The last digit counts even when it is zero.
    int const zeros = std::countr_zero(digits | std::uint64_t{1} << 56) / 8;
    std::uint64_t const text = (digits + asciiZeros) >> (8 * zeros);
    std::memcpy(out, &text, 8);
    return out + 8 - zeros;
}

}  // namespace Detail

// Characters that writeDecimal() may overwrite, whatever the number.
constexpr unsigned decimalRoom = 1 + 24;

// Writes an integer in decimal, "-" in front of a negative one; the address behind the last digit.
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
    if (number < chunk) {
        return Detail::writeSomeDigits(out, number);
    }
    std::uint64_t const upper = number / chunk;
    if (upper < chunk) {
        out = Detail::writeSomeDigits(out, upper);
    } else {
        out = Detail::writeSomeDigits(out, upper / chunk);
        out = Detail::writeEightDigits(out, upper % chunk);
    }
    return Detail::writeEightDigits(out, number % chunk);
}

}  // namespace Dovan
