#include "stat/safe_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include <langinfo.h>

namespace Quask::Stat {
namespace {

struct Character
{
    std::uint32_t code = 0;
    std::size_t length = 0;  // bytes; 0: no character of UTF-8
};

// How a sequence of this length begins and the least code that needs it. Anything shorter would
// have another sequence, too.
struct SequenceKind
{
    unsigned char mask;
    unsigned char lead;
    std::size_t length;
    std::uint32_t least;
};

constexpr std::array<SequenceKind, 4> sequenceKinds{
    {{0x80, 0x00, 1, 0}, {0xe0, 0xc0, 2, 0x80}, {0xf0, 0xe0, 3, 0x800}, {0xf8, 0xf0, 4, 0x10000}}};

// The character that `text`, which is not empty, begins with.
Character firstCharacter(std::string_view text)
{
    auto const byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (auto const& [mask, lead, length, least] : sequenceKinds) {
        if ((byteAt(0) & mask) != lead || text.size() < length) {
            continue;
        }
        std::uint32_t code = byteAt(0) & static_cast<unsigned char>(~mask);
        for (std::size_t i = 1; i < length; ++i) {
            if ((byteAt(i) & 0xc0) != 0x80) {
                return {};
            }
            code = code << 6 | (byteAt(i) & 0x3fu);
        }
        bool const isSurrogate = code >= 0xd800 && code <= 0xdfff;
        if (code < least || code > 0x10ffff || isSurrogate) {
            return {};
        }
        return {code, length};
    }
    return {};
}

struct Range
{
    std::uint32_t first;
    std::uint32_t last;
};

// Control characters, and what changes the direction of writing or cannot be seen.
constexpr std::array<Range, 8> notShown{{{0, 0x1f},
                                         {0x7f, 0x9f},
                                         {0xad, 0xad},
                                         {0x61c, 0x61c},
                                         {0x200b, 0x200f},
                                         {0x2028, 0x202e},
                                         {0x2060, 0x206f},
                                         {0xfeff, 0xfeff}}};

bool isShown(std::uint32_t code)
{
    return code < 0xe0000 && std::ranges::none_of(notShown, [code](Range const& range) {
               return code >= range.first && code <= range.last;
           });
}

void appendEscaped(std::string& out, std::string_view bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    for (char const byte : bytes) {
        auto const value = static_cast<unsigned char>(byte);
        out.append("\\x").append(1, digits[value >> 4]).append(1, digits[value & 0xf]);
    }
}

void appendUnicodeEscape(std::string& out, std::uint32_t unit)
{
    constexpr std::string_view digits = "0123456789abcdef";
    out += "\\u";
    for (unsigned shift = 16; shift > 0; shift -= 4) {
        out += digits[unit >> (shift - 4) & 0xf];
    }
}

}  // namespace

std::string terminalText(std::string_view text, bool isUtf8)
{
    std::string out;
    while (!text.empty()) {
        Character const character = firstCharacter(text);
        std::string_view const bytes = text.substr(0, std::max<std::size_t>(character.length, 1));
        text.remove_prefix(bytes.size());
        if (bytes == "\\") {
            out += "\\\\";
        } else if (character.length == 0 || !isShown(character.code) ||
                   (character.code > 0x7e && !isUtf8)) {
            appendEscaped(out, bytes);
        } else {
            out += bytes;
        }
    }
    return out;
}

std::string utf8Text(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        Character const character = firstCharacter(text);
        if (character.length == 0) {
            out += "\xef\xbf\xbd";
            text.remove_prefix(1);
        } else {
            out += text.substr(0, character.length);
            text.remove_prefix(character.length);
        }
    }
    return out;
}

std::string asciiJson(std::string_view json)
{
    std::string out;
    while (!json.empty()) {
        Character const character = firstCharacter(json);
        std::uint32_t const code = character.code;
        if (code < 0x7f) {
            out += json.front();
        } else if (code <= 0xffff) {
            appendUnicodeEscape(out, code);
        } else {  // two units of UTF-16
            appendUnicodeEscape(out, 0xd800 + ((code - 0x10000) >> 10));
            appendUnicodeEscape(out, 0xdc00 + ((code - 0x10000) & 0x3ff));
        }
        json.remove_prefix(std::max<std::size_t>(character.length, 1));
    }
    return out;
}

bool isUtf8Locale()
{
    return std::string_view(nl_langinfo(CODESET)) == "UTF-8";
}

}  // namespace Quask::Stat
