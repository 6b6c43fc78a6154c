#include "table/vandral.h"

#include <atomic>

#include "mem/atomics.h"

namespace Quask {

Vandral::Header::Header(Header const& live)
{
    std::uint32_t before = 0;
    std::uint32_t after = 0;
    do {
        // acquire and fence: as in the copy of a slot header, with the writer's stores of
        // notifications as the partners.
        before = Mem::verU32(Mem::Atomics::load64(&live.notifications, std::memory_order_acquire))
                     .version;
        Mem::Atomics::copy(static_cast<void*>(this), &live, sizeof *this);
        Mem::Atomics::fenceAcquire();
        after = Mem::Atomics::load32(&live.notifications.version, std::memory_order_relaxed);
    } while (after != before);
}

Vandral::Vandral(Dovan::Platform::DebugHandler& sharedHandler, RootPath const& tablePath)
    : Debuggable(sharedHandler),
      rootPath(&tablePath),
      primary(sharedHandler, tablePath, "vandral.1", false),
      secondary(sharedHandler, tablePath, "vandral.2", false)
{}

Vandral::~Vandral() = default;

}  // namespace Quask
