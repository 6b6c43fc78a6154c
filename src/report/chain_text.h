#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

#include "base/hex.h"

// What a chain's line is made of, but for the values. Each function returns the address after what
// it has written.
namespace Quask::ChainText {

// Characters that all pieces of an element but its value may take, the line's head included; and
// those that end a line.
inline constexpr std::size_t pieceRoom = 128;

inline char* write(char* out, std::string_view text)
{
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

inline char* writeHead(char* out, unsigned bucket)
{
    return write(Dovan::writeHex(write(out, "bucket["), bucket), "]");
}

// The link that leads to an element. What marks its value and the value follow at once.
inline char* writeLink(char* out, unsigned index)
{
    return write(Dovan::writeHex(out, index), "-->");
}

// The link that ends a chain. Its index is that of the null link, always.
inline char* writeEnd(char* out)
{
    return write(out, "ffffffff --> none\n");
}

}  // namespace Quask::ChainText
