#pragma once

#include <cstddef>
#include <cstdint>

#include "base/debug_handler.h"
#include "table/slot_reader_generic_table.h"

// How a walk over a damaged table ends; here, so that the walk itself stays short.
namespace Quask {

// Throws CorruptionDetectedException: the slot `index` lies outside the table or outside the mapped
// pages, and the slot file has not grown.
[[noreturn]] void throwOutsideSlots(Dovan::Platform::DebugHandler& handler,
                                    SlotReaderGenericTable const& slots, std::uint32_t index);

// Throws CorruptionDetectedException: the chain of `bucket` comes back to the slot `index`.
[[noreturn]] void throwCycle(Dovan::Platform::DebugHandler& handler, unsigned bucket,
                             std::uint32_t index);

// Throws CorruptionDetectedException: values of this size in slots of that size, all in bytes, make
// the chain of `bucket` longer than the file.
[[noreturn]] void throwOverlap(Dovan::Platform::DebugHandler& handler, unsigned bucket,
                               std::size_t slotSize, unsigned valueSize);

// Throws CorruptionDetectedException: with the chain of `bucket` the walk has met `elements`
// elements, far more than the `slots` slots can hold.
[[noreturn]] void throwTooManyElements(Dovan::Platform::DebugHandler& handler, unsigned bucket,
                                       std::uint64_t elements, std::uint64_t slots);

}  // namespace Quask
