#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/hex_digits.h"

namespace Dovan {

// Lower-case hexadecimal text of `size` bytes in memory order: two digits per byte, a space after
// every fourth byte that another follows. No bytes give an empty text.
std::string dumpHex(void const* data, unsigned size);

// The length of that text.
constexpr std::size_t dumpHexLength(std::size_t size)
{
    return size == 0 ? 0 : 2 * size + (size - 1) / 4;
}

// Writes that text to `out`, which has room for dumpHexLength(size) + dumpHexSlack characters; the
// address after the text. What follows that, up to the slack, may be overwritten.
inline char* writeDumpHex(char* out, void const* data, std::size_t size)
{
    auto const* bytes = static_cast<unsigned char const*>(data);
    for (; size > 8; bytes += 8, size -= 8) {
        out = HexDigits::write8Spaced(out, bytes);
        *out++ = ' ';
    }
    if (size == 8) {
        return HexDigits::write8Spaced(out, bytes);
    }
    if (size > 4) {
        out = HexDigits::write4(out, HexDigits::load(bytes, 4));
        *out++ = ' ';
        bytes += 4;
        size -= 4;
    }
    if (size == 4) {
        return HexDigits::write4(out, HexDigits::load(bytes, 4));
    }
    if (size == 0) {
        return out;  // `data` may be null
    }
    HexDigits::write4(out, HexDigits::load(bytes, size));
    return out + 2 * size;
}
constexpr std::size_t dumpHexSlack = 8;

// Writes two lower-case hexadecimal digits for each of the `size` bytes, in memory order and
// without spaces, to `out`, which has room for 2 * size + hexDigitsSlack characters; the address
// after the last. What follows it, up to the slack, may be overwritten.
inline char* writeHexDigits(char* out, void const* data, std::size_t size)
{
    auto const* bytes = static_cast<unsigned char const*>(data);
    for (; size >= 8; bytes += 8, size -= 8) {
        out = HexDigits::write8(out, bytes);
    }
    if (size >= 4) {
        out = HexDigits::write4(out, HexDigits::load(bytes, 4));
        bytes += 4;
        size -= 4;
    }
    if (size == 0) {
        return out;
    }
    HexDigits::write4(out, HexDigits::load(bytes, size));
    return out + 2 * size;
}
constexpr std::size_t hexDigitsSlack = 8;

// Writes `value` in lower-case hexadecimal without leading zeros; the address after the last
// digit. `out` has room for 8 characters, all of which may be overwritten.
inline char* writeHex(char* out, std::uint32_t value)
{
    unsigned const digitCount = (static_cast<unsigned>(std::bit_width(value | 1)) + 3) / 4;
    // The digits that count are moved to the top, and the most significant byte to the front.
    HexDigits::write4(out, __builtin_bswap32(value << (32 - 4 * digitCount)));
    return out + digitCount;
}

}  // namespace Dovan
