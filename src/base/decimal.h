#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

// The texts of the eight digits of two numbers, the first digit in the lowest byte.
struct DigitTexts
{
    std::uint64_t upper;
    std::uint64_t lower;
};

// The digits of two numbers below 100,000,000. With SSE2, which every x86-64 processor has, both
// are split at once, as eightDigits() splits one.
inline DigitTexts sixteenDigits(std::uint64_t upper, std::uint64_t lower)
{
#if defined(__SSE2__)
    // From the halves on, every part has 16 bits and so have the products.
    auto const times = [](__m128i parts, short factor) {
        return _mm_mullo_epi16(parts, _mm_set1_epi16(factor));
    };
    __m128i const numbers =
        _mm_set_epi64x(static_cast<long long>(lower), static_cast<long long>(upper));
    // 3518437209 / 2^45 is 1 / 10000 for all numbers of 32 bits.
    __m128i const tenThousands =
        _mm_srli_epi64(_mm_mul_epu32(numbers, _mm_set1_epi64x(3518437209)), 45);
    __m128i const rest =
        _mm_sub_epi64(numbers, _mm_mul_epu32(tenThousands, _mm_set1_epi64x(10000)));
    __m128i const halves = _mm_or_si128(tenThousands, _mm_slli_epi64(rest, 32));
    // 5243 / 2^19 is 1 / 100 for all numbers below 10,000.
    __m128i const hundreds = _mm_srli_epi16(_mm_mulhi_epu16(halves, _mm_set1_epi16(5243)), 3);
    __m128i const quarters =
        _mm_or_si128(hundreds, _mm_slli_epi32(_mm_sub_epi16(halves, times(hundreds, 100)), 16));
    __m128i const tens = _mm_srli_epi16(times(quarters, 103), 10);
    __m128i const digits =
        _mm_or_si128(tens, _mm_slli_epi16(_mm_sub_epi16(quarters, times(tens, 10)), 8));
    __m128i const texts = _mm_or_si128(digits, _mm_set1_epi8('0'));
    return {static_cast<std::uint64_t>(_mm_cvtsi128_si64(texts)),
            static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(texts, texts)))};
#else
    return {eightDigits(upper) + asciiZeros, eightDigits(lower) + asciiZeros};
#endif
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

// Writes the last `count` of eight digits; overwrites eight characters.
inline char* writeLastDigits(char* out, std::uint64_t text, unsigned count)
{
    text >>= 64 - 8 * count;
    std::memcpy(out, &text, 8);
    return out + count;
}

// Writes sixteen digits.
inline char* writeSixteenDigits(char* out, DigitTexts const& texts)
{
    std::memcpy(out, &texts.upper, 8);
    std::memcpy(out + 8, &texts.lower, 8);
    return out + 16;
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
        return Detail::writeLastDigits(out, Detail::eightDigits(number) + Detail::asciiZeros,
                                       count);
    }
    std::uint64_t const upper = number / chunk;
    if (count <= 16) {
        Detail::DigitTexts const texts = Detail::sixteenDigits(upper, number % chunk);
        out = Detail::writeLastDigits(out, texts.upper, count - 8);
        std::memcpy(out, &texts.lower, 8);
        return out + 8;
    }
    out = Detail::writeLastDigits(out, Detail::eightDigits(upper / chunk) + Detail::asciiZeros,
                                  count - 16);
    return Detail::writeSixteenDigits(out, Detail::sixteenDigits(upper % chunk, number % chunk));
}

}  // namespace Dovan
