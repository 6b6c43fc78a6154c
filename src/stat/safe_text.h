#pragma once

#include <string>
#include <string_view>

// What others have named (tables, commands, types), made fit to be printed.
namespace Quask::Stat {

// For a terminal: a backslash is doubled, and each byte that could do more than show a character is
// written as \xHH: control characters, those that change the direction of writing or are not
// visible, and what is not UTF-8. Without `isUtf8` each byte that is not ASCII, too. One line
// remains one line.
std::string terminalText(std::string_view text, bool isUtf8);

// For JSON and metrics, which are UTF-8: each byte that is part of no character of UTF-8 becomes
// U+FFFD.
std::string utf8Text(std::string_view text);

// A JSON text in UTF-8 with the characters that are not ASCII written as \uXXXX, so that its
// strings have none that a terminal acts on.
std::string asciiJson(std::string_view json);

// Whether the locale that the process has set encodes characters in UTF-8.
bool isUtf8Locale();

}  // namespace Quask::Stat
