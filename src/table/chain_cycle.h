#pragma once

#include <cstdint>

#include "table/slot_ref.h"

namespace Quask {

// Notices a chain that comes back to a slot of its own. One slot of the chain is remembered at a
// time, a later one whenever the chain has become twice as long: the cycle is found after at most
// three times as many steps as the chain has different slots, without memory for them.
//
// A writer that moves slots about may lead a walk to the same slot twice without there being a
// cycle; it rewrites the slot's next link then. So only a return to a slot whose link is still the
// one that was followed counts.
class ChainCycle
{
public:
    // Whether the chain, now at the slot `index` whose next link is `next`, runs in a circle.
    bool closesAt(std::uint32_t index, SlotRef const& next)
    {
        bool const returned = index == rememberedIndex_ &&
                              next.version == rememberedNext_.version &&
                              next.index == rememberedNext_.index;
        if (++steps_ == nextRemembered_) {
            rememberedIndex_ = index;
            rememberedNext_ = next;
            nextRemembered_ = 2 * steps_;
        }
        return returned;
    }

private:
    std::uint32_t rememberedIndex_ = SlotRef::null;
    SlotRef rememberedNext_ = {0, SlotRef::null};
    std::uint64_t steps_ = 0;
    std::uint64_t nextRemembered_ = 1;
};

}  // namespace Quask
