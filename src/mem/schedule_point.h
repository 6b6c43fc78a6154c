#pragma once

#include <atomic>
#include <cstddef>

namespace Mem {

// These are where a reader learns something that a writer changes: before every load of `size`
// bytes at `address`, at every acquire fence, before every look at the length of a table's file,
// and before every other use of the file's name. The tool's build makes nothing of them; a build
// with QUASK_INTERLEAVE calls the test that lets a writer run there.
#ifdef QUASK_INTERLEAVE
void schedulePoint(void const* address, std::size_t size, std::memory_order order);
void scheduleFence();
void scheduleFileSize();
void scheduleNameUse();
#else
inline void schedulePoint(void const* /*address*/, std::size_t /*size*/, std::memory_order) {}
inline void scheduleFence() {}
inline void scheduleFileSize() {}
inline void scheduleNameUse() {}
#endif

}  // namespace Mem
