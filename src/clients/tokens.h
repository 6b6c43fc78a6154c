#pragma once

#include <cstddef>
#include <string_view>

namespace Quask {

// The `index`-th token of `text`, counted from 1: tokens are separated by any run of the characters
// in `delimiters`, and a run at the start is skipped. Empty when there are fewer, and for index 0.
// A NUL is a character like any other. The result points into `text`.
inline std::string_view nthToken(std::string_view text, unsigned index, std::string_view delimiters)
{
    // As a loop, and not as find_first_of(): that calls a function for every character.
    auto const isDelimiter = [delimiters](char c) {
        for (char const delimiter : delimiters) {
            if (c == delimiter) {
                return true;
            }
        }
        return false;
    };
    std::size_t end = 0;
    for (unsigned i = 1;; ++i) {
        std::size_t start = end;
        while (start < text.size() && isDelimiter(text[start])) {
            ++start;
        }
        end = start;
        while (end < text.size() && !isDelimiter(text[end])) {
            ++end;
        }
        if (i >= index || end == text.size()) {
            return i == index ? text.substr(start, end - start) : std::string_view();
        }
    }
}

// The part after the last "/"; all of it when there is none.
inline std::string_view afterLastSlash(std::string_view text)
{
    return text.substr(text.rfind('/') + 1);
}

}  // namespace Quask
