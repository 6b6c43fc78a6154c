#pragma once

#include <cstdint>
#include <string_view>

#include "support/table_files.h"

namespace QuaskTesting {

// A sound table of random contents: elements in buckets, slots and with values drawn at random,
// links and state words with random versions. No value is being rewritten. The same for the same
// arguments.
struct RandomTable
{
    std::string_view valueType = "Test::Blob";
    std::uint32_t valueSize = 8;
    std::uint32_t buckets = 100;
    std::uint32_t elements = 80;
    std::uint32_t seed = 1;

    TableImage image() const;
};

}  // namespace QuaskTesting
