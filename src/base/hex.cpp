#include "base/hex.h"

#include <bit>
#include <cstring>

namespace Dovan {
namespace {

static_assert(std::endian::native == std::endian::little, "digits are laid out byte by byte");

// Eight nibbles, one in each byte, as eight digits.
constexpr std::uint64_t digitsOf(std::uint64_t nibbles)
{
    std::uint64_t const aboveNine = ((nibbles + 0x0606060606060606) >> 4) & 0x0101010101010101;
    return nibbles + 0x3030303030303030 + aboveNine * ('a' - '0' - 10);
}

// The eight digits of four bytes, in memory order.
constexpr std::uint64_t digitsOfBytes(std::uint32_t bytes)
{
    std::uint64_t spread = bytes;
    spread = (spread | spread << 16) & 0x0000ffff0000ffff;
    spread = (spread | spread << 8) & 0x00ff00ff00ff00ff;
    return digitsOf((spread >> 4 & 0x000f000f000f000f) | (spread & 0x000f000f000f000f) << 8);
}

std::uint32_t loadBytes(unsigned char const* bytes, std::size_t count)
{
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, count);
    return word;
}

}  // namespace

char* writeDumpHex(char* out, void const* data, std::size_t size)
{
    auto const* bytes = static_cast<unsigned char const*>(data);
    while (size > 4) {
        std::uint64_t const digits = digitsOfBytes(loadBytes(bytes, 4));
        std::memcpy(out, &digits, 8);
        out[8] = ' ';
        out += 9;
        bytes += 4;
        size -= 4;
    }
    std::uint64_t const digits = digitsOfBytes(loadBytes(bytes, size));
    std::memcpy(out, &digits, 8);
    return out + 2 * size;
}

std::string dumpHex(void const* data, unsigned size)
{
    std::string text(dumpHexLength(size) + dumpHexSlack, '\0');
    char const* const end = writeDumpHex(text.data(), data, size);
    text.resize(static_cast<std::size_t>(end - text.data()));
    return text;
}

char* writeHex(char* out, std::uint32_t value)
{
    unsigned const digitCount =
        value == 0 ? 1 : (static_cast<unsigned>(std::bit_width(value)) + 3) / 4;
    std::uint64_t nibbles = value;
    nibbles = (nibbles | nibbles << 16) & 0x0000ffff0000ffff;
    nibbles = (nibbles | nibbles << 8) & 0x00ff00ff00ff00ff;
    nibbles = (nibbles | nibbles << 4) & 0x0f0f0f0f0f0f0f0f;
    // The most significant digit comes first: the bytes are turned round and leading zeros shifted
    // out.
    std::uint64_t const digits = digitsOf(__builtin_bswap64(nibbles)) >> (64 - 8 * digitCount);
    std::memcpy(out, &digits, 8);
    return out + digitCount;
}

}  // namespace Dovan
