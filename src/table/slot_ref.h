#pragma once

#include <cstdint>

namespace Quask {

// A link of a bucket chain, as it is in a table file: one aligned 64-bit word, the version in its
// low half. The writer rewrites a link in one store that also raises the version, and does so at
// any time: a link is only ever read by one Mem::Atomics::load64.
struct SlotRef
{
    static constexpr std::uint32_t null = 0xffffffff;

    std::uint32_t version;
    std::uint32_t index;  // of a slot in the slot file; null ends the chain

    bool isNull() const { return index == null; }
};

static_assert(sizeof(SlotRef) == 8);

// The halves of a link word as it was loaded.
constexpr SlotRef slotRef(std::uint64_t word)
{
    return {static_cast<std::uint32_t>(word), static_cast<std::uint32_t>(word >> 32)};
}

}  // namespace Quask
