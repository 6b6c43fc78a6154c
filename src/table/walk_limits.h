#pragma once

#include <algorithm>
#include <cstdint>

#include "table/slot_reader_generic_table.h"

namespace Quask {

// How much a walk takes from a table before it stops believing it. The contents of the files could
// otherwise ask for any amount of memory, of text and of time.
struct WalkLimits
{
    // For the mapping that `slots` has at the moment, and values of `valueBytes` bytes.
    WalkLimits(SlotReaderGenericTable const& slots, unsigned valueBytes)
    {
        std::uint64_t const size = std::max(valueBytes, 1u);
        std::uint64_t const count = slots.slotCount();
        // A writer at work may lead the walk to a slot more than once: small tables get more room.
        chainSlots = count + 16 + std::min<std::uint64_t>(1024, (1u << 20) / size);
        elements = 16 * count + std::min<std::uint64_t>(1u << 20, (1u << 30) / size);
        // Slots that do not overlap have no more than the file, and a circle of them is found by
        // then. A damaged header may say that they overlap.
        bool const overlap =
            slots.slotSize() < SlotReaderGenericTable::valueOffset + std::uint64_t{valueBytes};
        overlappingSteps =
            overlap ? 4 * std::uint64_t{slots.readableSize()} / size : ~std::uint64_t{0};
    }

    std::uint64_t chainSlots;        // slots that one chain can lead to; see ChainCycle
    std::uint64_t overlappingSteps;  // how often a chain may go on through overlapping slots, until
                                     // its values are four times the file
    std::uint64_t elements;          // elements of all chains
};

}  // namespace Quask
