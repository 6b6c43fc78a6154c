#pragma once

#include <atomic>
#include <cstddef>

namespace Mem {

// These stand where a reader learns something of memory that a writer changes: in front of every
// load of `size` bytes at `address`, at every acquire fence, and in front of every look at the
// length of a table's file. The tool's build makes nothing of them; a build with QUASK_INTERLEAVE
// calls the test that lets a writer run there.
#ifdef QUASK_INTERLEAVE
void schedulePoint(void const* address, std::size_t size, std::memory_order order);
void scheduleFence();
void scheduleFileSize();
#else
inline void schedulePoint(void const* /*address*/, std::size_t /*size*/, std::memory_order) {}
inline void scheduleFence() {}
inline void scheduleFileSize() {}
#endif

}  // namespace Mem
