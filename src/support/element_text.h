#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "base/decimal.h"

// What the value printers print of one element, written to memory that has room for it.
namespace Dovan::Platform::ElementText {

// Room for the text of one element of any type. The longest that std::to_chars writes is a
// double's, -2.2250738585072014e-308.
inline constexpr std::size_t maxElementText = 32;
static_assert(maxElementText >= decimalRoom);

// Writes one character of a text between `quote`s; at most 4 characters. The address after them.
inline char* writeCharacter(char* out, unsigned char c, char quote)
{
    auto const escape = [&out](char letter) {
        *out++ = '\\';
        *out++ = letter;
    };
    if (c == static_cast<unsigned char>(quote) || c == '\\') {
        escape(static_cast<char>(c));
    } else if (c >= 0x20 && c <= 0x7e) {
        *out++ = static_cast<char>(c);
    } else if (c == '\n') {
        escape('n');
    } else if (c == '\t') {
        escape('t');
    } else if (c == '\r') {
        escape('r');
    } else {
        constexpr char digits[] = "0123456789abcdef";
        escape('x');
        *out++ = digits[c >> 4];
        *out++ = digits[c & 0xf];
    }
    return out;
}

inline char* write(char* out, std::string_view text)
{
    return std::copy(text.begin(), text.end(), out);
}

// Writes the text of one T to `out`, which has room for maxElementText characters; the address
// after the text.
template <typename T>
char* writeElement(char* out, unsigned char const* bytes)
{
    if constexpr (std::is_same_v<T, bool>) {
        return write(out, *bytes == 0 ? "false" : "true");
    } else if constexpr (std::is_same_v<T, char>) {
        *out = '\'';
        out = writeCharacter(out + 1, *bytes, '\'');
        *out = '\'';
        return out + 1;
    } else {
        T value;
        std::memcpy(&value, bytes, sizeof value);
        if constexpr (std::is_integral_v<T>) {
            return Dovan::writeDecimal(out, value);
        } else {
            return std::to_chars(out, out + maxElementText, value).ptr;
        }
    }
}

}  // namespace Dovan::Platform::ElementText
