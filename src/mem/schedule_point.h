#pragma once

namespace Mem {

// Stands in front of every load from shared memory. The tool's build makes nothing of it; a build
// with QUASK_INTERLEAVE calls the test that lets a writer run between any two loads.
#ifdef QUASK_INTERLEAVE
void schedulePoint();
#else
inline void schedulePoint() {}
#endif

}  // namespace Mem
