#pragma once

#include <cstddef>
#include <vector>

#include "interleave/scheduled_memory.h"

namespace QuaskTesting {

// The memory of a machine that makes one access after the other, in some order of the two programs:
// the writer may make any number of its stores before each of the reader's loads. The stores
// that are left over come after the end of the reader.
//
// All those schedules are covered, without running each:
//
// - The contents of the files at every moment are known beforehand, so when the reader is about to
//   load a word, with k stores made, the values are known that it can be shown: what the word holds
//   at moment k, k + 1, ... An execution is run for each different one of these values, not for
//   each moment. Two moments with the same value make no difference to the reader, now or ever.
// - An execution makes a store as late as its values allow: at the earliest moment, from the
//   present one on, at which the word holds the value chosen. Where another schedule is further on,
//   all that it can still show this schedule can show as well, since it may wait until then.
//   So a value that some schedule shows after the same values is among the choices.
// - The schedules that an execution stands for are those rows of moments k1 <= k2 <= ..., one for
//   each load, in which each is a moment at which that load's word holds the value loaded. They are
//   counted by dynamic programming over the loads, and each schedule belongs to one execution, the
//   one with its values. Without anything to tell apart that makes, for n loads and s stores, the
//   (n + s)! / (n! s!) of all.
//
// With `telling` set to everyMoment each schedule is an execution of its own, which is feasible for
// the smallest only: it shows that the reduction leaves nothing out.
class InterleavedMemory final : public ScheduledMemory
{
public:
    enum class Telling
    {
        values,
        everyMoment
    };

    InterleavedMemory(StoreReplay& replay, WriterHistory const& history, unsigned endless,
                      Telling telling = Telling::values)
        : ScheduledMemory(replay, history, endless), telling_(telling)
    {}

    BigCount schedules() const override;
    void forTightestSpans(std::size_t firstLoad, std::size_t lastLoad,
                          SpanCheck const& check) const override;
    void beforeFileSize() override;

private:
    void restart() override;
    void show(Place const& place, void const* address, std::memory_order order) override;

    template <typename ValueAt>
    bool choose(ValueAt&& valueAt);

    Telling const telling_;
    Moment now_ = 0;
    std::vector<Moments> possible_;  // of each load, the moments at which it sees what it saw
};

}  // namespace QuaskTesting
