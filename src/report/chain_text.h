#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

#include "base/decimal.h"
#include "base/hex.h"
#include "table/slot_ref.h"

// What a chain's line is made of, but for the values. Each function returns the address after what
// it has written. With `showVersions` each link's version and each slot's state word are shown, in
// decimal.
namespace Quask::ChainText {

// Characters that all pieces of an element but its value may take, the line's head included; and
// those that end a line.
inline constexpr std::size_t pieceRoom = 128;

inline char* write(char* out, std::string_view text)
{
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

// "42:", in decimal.
inline char* writePrefix(char* out, unsigned number)
{
    return write(Dovan::writeDecimal(out, number), ":");
}

inline char* writeHead(char* out, unsigned bucket)
{
    return write(Dovan::writeHex(write(out, "bucket["), bucket), "]");
}

// All of an element but its value.
[[gnu::always_inline]] inline char* writeReference(char* out, SlotRef const& ref, bool lookaside,
                                                   unsigned sequence, bool showVersions)
{
    *out++ = ' ';
    if (showVersions) {
        out = writePrefix(out, ref.version);
    }
    out = write(Dovan::writeHex(out, ref.index), "-->");
    if (showVersions) {
        out = writePrefix(out, sequence);
    }
    if (lookaside) {
        *out++ = '*';
    }
    return out;
}

// The index of `ref` is that of the null link, always.
[[gnu::always_inline]] inline char* writeTail(char* out, SlotRef const& ref, bool showVersions)
{
    *out++ = ' ';
    if (showVersions) {
        out = writePrefix(out, ref.version);
    }
    return write(out, "ffffffff --> none\n");
}

}  // namespace Quask::ChainText
