#pragma once

#include <bit>
#include <cstdint>
#include <string>

namespace Dovan {

// Lower-case hexadecimal text of `size` bytes in memory order: two digits a byte, a blank behind
// every fourth byte that another follows. No bytes give an empty text.
std::string dumpHex(void const* data, unsigned size);

// The length of that text.
constexpr std::size_t dumpHexLength(std::size_t size)
{
    return size == 0 ? 0 : 2 * size + (size - 1) / 4;
}

// Writes that text to `out`, which has room for dumpHexLength(size) + dumpHexSlack characters; the
// address behind the last of the text. What lies behind it, up to the slack, may be overwritten.
char* writeDumpHex(char* out, void const* data, std::size_t size);
constexpr std::size_t dumpHexSlack = 16;

// Writes `value` in lower-case hexadecimal without leading zeros; the address behind the last
// digit. `out` has room for 8 characters, all of which may be overwritten.
char* writeHex(char* out, std::uint32_t value);

}  // namespace Dovan
