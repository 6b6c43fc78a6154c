#pragma once

#include <cstdint>

#include "support/table_files.h"

namespace QuaskAttack {

// The sound table number `number` of a row of tables that replace each other. Whatever a report
// shows of it says which number it is, so that a report on files of two of them shows:
//   - every header's stamp is the number;
//   - the slot and notification figures are 1,000,000 + number, the others firstBuckets + number
//     modulo 64;
//   - each bucket has one element, whose value is the two words {number, bucket}, and no bucket
//     leads to the slot to which it leads in the table before or after.
QuaskTesting::TableImage making(std::uint32_t number);

inline constexpr std::uint32_t firstBuckets = 16;

}  // namespace QuaskAttack
