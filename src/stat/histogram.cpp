#include "stat/histogram.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <string_view>
#include <vector>

namespace Quask::Stat {
namespace {

struct Line
{
    std::string label;
    std::uint64_t count = 0;
};

constexpr std::uint64_t firstRange = 16;

// Which line a length is in: one line for each up to 15, then 16 to 31, 32 to 63 and so on.
std::size_t lineOf(std::uint64_t length)
{
    return length < firstRange
               ? static_cast<std::size_t>(length)
               : static_cast<std::size_t>(firstRange) + std::bit_width(length / firstRange) - 1;
}

std::string labelOf(std::size_t line)
{
    if (line < firstRange) {
        return std::to_string(line);
    }
    std::uint64_t const first = firstRange << (line - firstRange);
    return std::to_string(first) + "-" + std::to_string(2 * first - 1);
}

std::vector<Line> linesOf(std::map<std::uint64_t, std::uint64_t> const& counts)
{
    std::vector<Line> lines;
    for (auto const& [length, count] : counts) {
        std::size_t const line = lineOf(length);
        while (lines.size() <= line) {
            lines.push_back({labelOf(lines.size()), 0});
        }
        lines[line].count += count;
    }
    return lines;
}

// A bar of `eighths` eighths of a character, at least one when there is anything to show.
std::string barOf(std::uint64_t eighths, bool isUtf8)
{
    constexpr std::array<std::string_view, 8> ends{"",
                                                   "\xe2\x96\x8f",
                                                   "\xe2\x96\x8e",
                                                   "\xe2\x96\x8d",
                                                   "\xe2\x96\x8c",
                                                   "\xe2\x96\x8b",
                                                   "\xe2\x96\x8a",
                                                   "\xe2\x96\x89"};
    std::string bar;
    for (std::uint64_t i = 0; i < eighths / 8; ++i) {
        bar += isUtf8 ? "\xe2\x96\x88" : "#";
    }
    if (isUtf8) {
        bar += ends.at(eighths % 8);
    } else if (eighths > 0 && eighths < 8) {
        bar += "#";
    }
    return bar;
}

std::string alignedRight(std::string_view text, std::size_t width)
{
    return std::string(width - std::min(width, text.size()), ' ').append(text);
}

}  // namespace

std::string histogramText(std::map<std::uint64_t, std::uint64_t> const& counts, unsigned width,
                          bool isUtf8)
{
    constexpr std::size_t leastRoom = 8;
    std::vector<Line> const lines = linesOf(counts);
    std::size_t labelWidth = 0;
    std::uint64_t most = 1;
    for (Line const& line : lines) {
        labelWidth = std::max(labelWidth, line.label.size());
        most = std::max(most, line.count);
    }
    std::size_t const countWidth = std::to_string(most).size();
    std::size_t const used = labelWidth + countWidth + 2;
    std::uint64_t const room = std::max<std::size_t>(leastRoom, width > used ? width - used : 0);
    std::string text;
    for (Line const& line : lines) {
        // In floating point: the product may be larger than any integer.
        auto const eighths =
            static_cast<std::uint64_t>(static_cast<double>(line.count) / static_cast<double>(most) *
                                       static_cast<double>(room * 8));
        std::string const bar =
            barOf(line.count == 0 ? 0 : std::max<std::uint64_t>(eighths, 1), isUtf8);
        text += alignedRight(line.label, labelWidth) + " " +
                alignedRight(std::to_string(line.count), countWidth);
        text.append(bar.empty() ? "" : " ").append(bar).append("\n");
    }
    return text;
}

}  // namespace Quask::Stat
