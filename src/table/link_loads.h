#pragma once

#include <atomic>
#include <cstddef>

#include "mem/atomics.h"
#include "table/slot_ref.h"

// How a link in a mapped file is read and looked at again. Any thread.
namespace Quask {

// acquire: pairs with the writer's release store of the link, so that what the writer had stored
// into the slot before it led there is seen.
[[gnu::always_inline]] inline SlotRef loadLink(void const* linkAddress)
{
    return slotRef(Mem::Atomics::load64(linkAddress, std::memory_order_acquire));
}

// Whether `link`, which was loaded from there and followed, is still the same.
//
// relaxed: the loads of the slot, value and next link, come before it by the fence after the value
// and the acquire of the next link. When one of them saw the slot as it was after the link had been
// rewritten, this load sees the rewritten link: the writer stores a link before it touches the slot
// that the link has left.
[[gnu::always_inline]] inline bool isUnchanged(void const* linkAddress, SlotRef const& link)
{
    static_assert(offsetof(SlotRef, version) == 0);
    return Mem::Atomics::load32(linkAddress, std::memory_order_relaxed) == link.version;
}

}  // namespace Quask
