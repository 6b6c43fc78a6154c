#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace Quask::Stat {

// A histogram of lengths, `counts` of each, as lines no wider than `width` characters as long as
// that leaves room for bars: the length or range of lengths, how many there are, a bar. Lengths
// from 16 on are put together in ranges, each twice as wide as the one before. The longest bar has
// the room that is left, and every bar that is not of 0 shows. Bars are of block characters where
// `isUtf8`, else of "#". Empty without counts.
std::string histogramText(std::map<std::uint64_t, std::uint64_t> const& counts, unsigned width,
                          bool isUtf8);

}  // namespace Quask::Stat
