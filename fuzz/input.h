#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace QuaskFuzzing {

// An input's bytes, taken from its front. Every input can be read: what it lacks is 0, or missing
// from the bytes asked for.
class Input
{
public:
    Input(std::uint8_t const* data, std::size_t size)
        : rest_(reinterpret_cast<char const*>(data), size)
    {}

    bool atEnd() const { return rest_.empty(); }

    std::uint8_t byte()
    {
        std::string_view const one = bytes(1);
        return one.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(one[0]);
    }

    // Two bytes, little-endian.
    std::uint16_t word()
    {
        unsigned const low = byte();
        return static_cast<std::uint16_t>(low | unsigned{byte()} << 8);
    }

    std::string_view bytes(std::size_t count)
    {
        std::string_view const front = rest_.substr(0, count);
        rest_.remove_prefix(front.size());
        return front;
    }

    // The text up to the next newline, which is skipped, or to the end; and whether there was a
    // newline.
    std::pair<std::string_view, bool> lineAndEnd()
    {
        std::size_t const length = std::min(rest_.find('\n'), rest_.size());
        std::string_view const text = bytes(length);
        return {text, !bytes(1).empty()};
    }

    std::string_view line() { return lineAndEnd().first; }

private:
    std::string_view rest_;
};

}  // namespace QuaskFuzzing
