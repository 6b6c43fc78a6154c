#pragma once

#include <cstddef>

#include "support/table_files.h"

namespace QuaskFuzzing {

constexpr std::size_t baseTableCount = 8;

// The tables that inputs start from. Number 0 has nothing but empty files; the others are sound.
// Precondition: number < baseTableCount.
QuaskTesting::TableImage const& baseTable(std::size_t number);

}  // namespace QuaskFuzzing
