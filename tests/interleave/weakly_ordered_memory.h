#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "interleave/scheduled_memory.h"

namespace QuaskTesting {

// What is taken away from the orders that a reader's code asks for, to see that it needs them.
struct LostOrders
{
    bool acquireOfLinks = false;      // the acquire of 64-bit loads: links, and the slot count
    bool acquireOfSequences = false;  // the acquire of 32-bit loads
    bool acquireFences = false;
};

// The memory of a machine that is as weakly ordered as the language allows: each load may be shown
// any store to its word that the orders of the two programs do not keep from it, however many later
// ones there are. With one writer, and a reader that stores nothing, these rules are all of the
// language's memory model that matters:
//
// - A load is never shown an older store to a byte than a load before it was (coherence), nor one
//   older than the reader's view: the moment such that all stores up to it have happened before.
// - The view grows with an acquire load, or a relaxed one and an acquire fence after it, when what
//   was shown is a release store, or a relaxed one with a release fence before it: up to that
//   store, or to that fence.
// - A word is shown as it is at one moment: stores and aligned loads are single accesses.
//
// Moments are then not a time that the two programs share, only the order of the writer's stores.
// So what holds for a reading is counted from the reader's view when it begins, and there is no
// other end than the writer's last moment.
//
// Every execution is shown other stores. What a schedule would be beyond that is not counted.
class WeaklyOrderedMemory final : public ScheduledMemory
{
public:
    WeaklyOrderedMemory(StoreReplay& replay, WriterHistory const& history, unsigned endless,
                        LostOrders const& lost = {})
        : ScheduledMemory(replay, history, endless), lost_(lost)
    {}

    BigCount schedules() const override { return 0; }
    void forTightestSpans(std::size_t firstLoad, std::size_t lastLoad,
                          SpanCheck const& check) const override;
    void beforeFence() override;
    void beforeFileSize() override;

private:
    void restart() override;
    void show(Place const& place, void const* address, std::memory_order order) override;

    bool isAcquire(Place const& place, std::memory_order order) const;

    LostOrders const lost_;
    Moment view_ = 0;
    Moment behindFence_ = 0;     // what the view is after the next acquire fence
    Moment shownLength_ = 0;     // the moment as of which the length of the slot file was shown
    std::vector<Moment> views_;  // of each load, the view before it
    // For each byte of a file, the moment as of which it was shown last.
    std::array<std::vector<Moment>, allTableFiles.size()> shown_;
};

}  // namespace QuaskTesting
