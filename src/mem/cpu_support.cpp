#include <atomic>
#include <cstdint>

#include "mem/atomics.h"

namespace Mem::Atomics {

// Alone in its file, so that a test can link a processor that lacks the loads in its place.
bool checkCpuSupport()
{
    return std::atomic_ref<std::uint64_t>::is_always_lock_free;
}

}  // namespace Mem::Atomics
