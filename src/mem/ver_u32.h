#pragma once

#include <cstdint>
#include <ostream>

namespace Mem {

// A value with the change counter that its writer raises at every rewrite. In a table file it is
// one aligned 64-bit word, the version in its low half.
struct VerU32
{
    std::uint32_t version;
    std::uint32_t value;
};

static_assert(sizeof(VerU32) == 8);

// The halves of a 64-bit word as it was loaded.
constexpr VerU32 verU32(std::uint64_t word)
{
    return {static_cast<std::uint32_t>(word), static_cast<std::uint32_t>(word >> 32)};
}

// The version in hexadecimal, ":", the value in decimal. The stream is left in decimal.
std::ostream& operator<<(std::ostream& out, VerU32 const& pair);

}  // namespace Mem
