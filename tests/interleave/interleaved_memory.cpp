#include "interleave/interleaved_memory.h"

#include <cstring>
#include <numeric>
#include <stdexcept>

namespace QuaskTesting {

void InterleavedMemory::restart()
{
    now_ = 0;
    possible_.clear();
}

// Chooses the moment at which the next load happens and lets the writer run up to it; whether that
// changed the moment. `valueAt` is what the load sees at a moment.
template <typename ValueAt>
bool InterleavedMemory::choose(ValueAt&& valueAt)
{
    // The moments from now on, put together by value, in the order in which the values appear.
    std::uint64_t values[latestPossible + 1];
    Moments moments[latestPossible + 1];
    std::size_t different = 0;
    Moments alternatives = 0;
    for (Moment moment = now_; moment <= history_.last(); ++moment) {
        std::uint64_t const value = valueAt(moment);
        std::size_t i = telling_ == Telling::everyMoment ? different : 0;
        while (i < different && values[i] != value) {
            ++i;
        }
        if (i == different) {
            values[different] = value;
            moments[different++] = 0;
            alternatives |= only(moment);
        }
        moments[i] |= only(moment);
    }

    Moment const chosen = choices_.take(alternatives);
    for (std::size_t i = 0; i < different; ++i) {
        if (contains(moments[i], chosen)) {
            possible_.push_back(moments[i]);
        }
    }
    bool const runs = chosen != now_;
    while (now_ != chosen) {
        replay_.apply(history_.storeBefore(++now_));
    }
    return runs;
}

void InterleavedMemory::show(Place const& place, void const* address, std::memory_order /*order*/)
{
    bool const runs = choose([&](Moment moment) { return history_.wordAt(place, moment); });
    note(place, now_, runs);
    std::uint64_t word = 0;
    std::memcpy(&word, address, place.size);
    if (word != history_.wordAt(place, now_)) {
        throw std::logic_error("the reader looks at something else than the writer's table");
    }
}

void InterleavedMemory::beforeFileSize()
{
    bool const runs =
        choose([&](Moment moment) { return history_.contents(TableFile::slots, moment).size(); });
    noteFileSize(now_, runs);
}

BigCount InterleavedMemory::schedules() const
{
    // By the moment of the last load: the rows of moments up to it.
    std::vector<BigCount> rows(history_.last() + 1, 0);
    rows[0] = 1;
    for (Moments const possible : possible_) {
        BigCount sum = 0;
        for (Moment moment = 0; moment < rows.size(); ++moment) {
            sum += rows[moment];
            rows[moment] = contains(possible, moment) ? sum : 0;
        }
    }
    return std::accumulate(rows.begin(), rows.end(), BigCount{0});
}

void InterleavedMemory::forTightestSpans(std::size_t firstLoad, std::size_t lastLoad,
                                         SpanCheck const& check) const
{
    // A schedule that has the first load at a moment has the last one at the earliest moment that
    // the loads between them allow, or later, which makes the span wider. `latestEnd` keeps off the
    // moments from which no schedule reaches the execution's end.
    Moment latestEnd = history_.last();
    for (std::size_t load = possible_.size(); load-- > firstLoad;) {
        latestEnd = latest(possible_[load] & upTo(latestEnd));
    }
    for (Moment first = 0; first <= latestEnd; ++first) {
        if (!contains(possible_[firstLoad], first)) {
            continue;
        }
        Moment last = first;
        for (std::size_t load = firstLoad + 1; load <= lastLoad; ++load) {
            last = earliest(possible_[load] & from(last));
        }
        check(first, last);
    }
}

}  // namespace QuaskTesting
