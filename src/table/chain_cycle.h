#pragma once

#include <algorithm>
#include <cstdint>

#include "table/slot_ref.h"

namespace Quask {

// Notices a chain that never ends. One slot of the chain is remembered at a time, a later one
// whenever the chain has become twice as long, the last one when it is as long as there are slots.
// From then on a chain whose links do not change is known to run in a circle, and comes back to
// that slot within as many steps again. So a circle is found after at most twice as many steps as
// there are slots, and after at most three times as many as the chain has different slots, without
// memory for them; a chain that goes on longer was rewritten during the walk.
//
// A writer that moves slots about may lead a walk to the same slot twice without there being a
// circle; it rewrites the slot's next link then. So only a return to a slot whose link is still the
// one that was followed counts.
class ChainCycle
{
public:
    enum class Verdict
    {
        goesOn,
        circle,    // the chain is back at a slot by a link that was followed before
        rewritten  // the chain is longer than any whose links do not change
    };

    // `slotCount` is at least the number of slots that a chain can lead to, and not 0.
    explicit ChainCycle(std::uint64_t slotCount) : slotCount_(slotCount) {}

    // The chain, now at the slot `index`, goes on by that slot's link `next`.
    Verdict follow(std::uint32_t index, SlotRef const& next)
    {
        if (index == rememberedIndex_ && next.version == rememberedNext_.version &&
            next.index == rememberedNext_.index) [[unlikely]] {
            return Verdict::circle;
        }
        if (++steps_ == nextRemembered_) {
            return remember(index, next);
        }
        return Verdict::goesOn;
    }

    // How often the chain went on.
    std::uint64_t steps() const { return steps_; }

private:
    Verdict remember(std::uint32_t index, SlotRef const& next)
    {
        if (steps_ > slotCount_) {
            return Verdict::rewritten;
        }
        rememberedIndex_ = index;
        rememberedNext_ = next;
        nextRemembered_ =
            steps_ == slotCount_ ? 2 * slotCount_ + 1 : std::min(2 * steps_, slotCount_);
        return Verdict::goesOn;
    }

    std::uint64_t slotCount_;
    std::uint32_t rememberedIndex_ = SlotRef::null;
    SlotRef rememberedNext_ = {0, SlotRef::null};
    std::uint64_t steps_ = 0;
    std::uint64_t nextRemembered_ = 1;
};

}  // namespace Quask
