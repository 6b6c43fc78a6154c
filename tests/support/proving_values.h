#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

// Values that prove themselves: from its bytes alone each shows whether it is whole, which element
// it is, how often that was changed, and to which bucket it belongs.
//
// From 16 bytes on the first word is {key, generation}, each of 32 bits, and every word after it
// is mixed from that one and its position, the last one cut to what there is room for. From 8 to 15
// bytes the first word is key (24 bits), generation (24 bits) and 16 bits mixed from the two. A mix
// of two values passes for whole once in 2^64 for each word that is another's, once in 2^16 where
// that word is the short form's.
namespace QuaskTesting {

constexpr std::uint32_t smallestProvingValue = 8;

// Elements that are never touched and those that are, in keys of 24 bits.
constexpr std::uint32_t stableKeyBit = 1 << 23;
constexpr std::uint32_t hotKey(std::uint32_t number)
{
    return number & (stableKeyBit - 1);
}
constexpr std::uint32_t stableKey(std::uint32_t number)
{
    return hotKey(number) | stableKeyBit;
}
constexpr bool isStableKey(std::uint32_t key)
{
    return (key & stableKeyBit) != 0;
}

// The bucket that the element of this key belongs to in a table of `numBuckets`: its number modulo
// that.
constexpr std::uint32_t bucketOfKey(std::uint32_t key, std::uint32_t numBuckets)
{
    return hotKey(key) % numBuckets;
}

// What a whole value says.
struct Proven
{
    std::uint32_t key;
    std::uint32_t generation;  // modulo 2^24 in a value of less than 16 bytes
    bool operator==(Proven const&) const = default;
};

namespace Detail {

constexpr std::uint64_t mix(std::uint64_t word, std::uint64_t position)
{
    word += (position + 1) * 0x9e3779b97f4a7c15;
    word = (word ^ word >> 30) * 0xbf58476d1ce4e5b9;
    word = (word ^ word >> 27) * 0x94d049bb133111eb;
    return word ^ word >> 31;
}

constexpr std::uint64_t firstWord(std::size_t size, Proven const& proven)
{
    if (size >= 16) {
        return std::uint64_t(proven.generation) << 32 | proven.key;
    }
    std::uint64_t const facts =
        std::uint64_t(proven.generation & 0xFFFFFF) << 24 | (proven.key & 0xFFFFFF);
    return mix(facts, 0) << 48 | facts;
}

constexpr Proven factsOf(std::size_t size, std::uint64_t first)
{
    if (size >= 16) {
        return {static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(first >> 32)};
    }
    return {static_cast<std::uint32_t>(first & 0xFFFFFF),
            static_cast<std::uint32_t>(first >> 24 & 0xFFFFFF)};
}

}  // namespace Detail

// Fills `size` bytes, at least smallestProvingValue, with the value of the element `key` (of 24
// bits) after `generation` changes.
inline void makeProvingValue(void* bytes, std::size_t size, std::uint32_t key,
                             std::uint32_t generation)
{
    assert(size >= smallestProvingValue);
    auto* const out = static_cast<std::byte*>(bytes);
    std::uint64_t const first = Detail::firstWord(size, {key, generation});
    std::memcpy(out, &first, 8);
    for (std::size_t i = 8; i < size; i += 8) {
        std::uint64_t const word = Detail::mix(first, i);
        std::memcpy(out + i, &word, std::min<std::size_t>(8, size - i));
    }
}

inline std::string provingValue(std::size_t size, std::uint32_t key, std::uint32_t generation)
{
    std::string bytes(size, '\0');
    makeProvingValue(bytes.data(), size, key, generation);
    return bytes;
}

// What the value says, or nothing when it is not whole.
inline std::optional<Proven> provenBy(void const* bytes, std::size_t size)
{
    if (size < smallestProvingValue) {
        return std::nullopt;
    }
    auto const* const in = static_cast<std::byte const*>(bytes);
    std::uint64_t first;
    std::memcpy(&first, in, 8);
    Proven const proven = Detail::factsOf(size, first);
    if (Detail::firstWord(size, proven) != first) {
        return std::nullopt;
    }
    for (std::size_t i = 8; i < size; i += 8) {
        std::uint64_t const word = Detail::mix(first, i);
        if (std::memcmp(in + i, &word, std::min<std::size_t>(8, size - i)) != 0) {
            return std::nullopt;
        }
    }
    return proven;
}

inline std::optional<Proven> provenBy(std::string_view bytes)
{
    return provenBy(bytes.data(), bytes.size());
}

}  // namespace QuaskTesting
