#include "interleave/weakly_ordered_memory.h"

#include <algorithm>
#include <cstring>

#include "support/mem_local.h"

namespace QuaskTesting {

void WeaklyOrderedMemory::restart()
{
    view_ = behindFence_ = shownLength_ = 0;
    views_.clear();
    for (TableFile const file : allTableFiles) {
        auto const mapped = Mem::roundUpToPages(history_.contents(file, history_.last()).size());
        shown_[static_cast<std::size_t>(file)].assign(mapped, 0);
    }
}

void WeaklyOrderedMemory::show(Place const& place, void const* address, std::memory_order order)
{
    auto& bytes = shown_[static_cast<std::size_t>(place.file)];
    auto const first = bytes.begin() + static_cast<std::ptrdiff_t>(place.offset);
    auto const end = first + static_cast<std::ptrdiff_t>(place.size);
    Moment const oldest = std::max(view_, *std::max_element(first, end));
    Moments const stores = history_.storesTo(place);
    Moment const chosen = choices_.take(only(oldest) | (stores & ~upTo(oldest)));

    views_.push_back(view_);
    std::fill(first, end, chosen);
    // What the word is made of: the last store to each of its bytes.
    Moment shown = 0;
    for (std::uint64_t offset = place.offset; offset < place.offset + place.size; ++offset) {
        Moments const made = history_.storesTo({place.file, offset, 1}) & upTo(chosen);
        shown = made == 0 ? shown : std::max(shown, history_.shownBy(latest(made)));
    }
    behindFence_ = std::max(behindFence_, shown);
    view_ = isAcquire(place, order) ? std::max(view_, shown) : view_;

    std::uint64_t const word = history_.wordAt(place, chosen);
    if (std::memcmp(address, &word, place.size) != 0) {
        replay_.apply({place.file, place.offset,
                       std::string(reinterpret_cast<char const*>(&word), place.size)});
    }
    note(place, chosen, chosen != oldest);
}

bool WeaklyOrderedMemory::isAcquire(Place const& place, std::memory_order order) const
{
    bool const lost = place.size == 8 ? lost_.acquireOfLinks : lost_.acquireOfSequences;
    return order == std::memory_order_acquire && !lost;
}

void WeaklyOrderedMemory::beforeFence()
{
    if (!lost_.acquireFences) {
        view_ = std::max(view_, behindFence_);
    }
}

// The system's own locks order this more than is made use of here.
void WeaklyOrderedMemory::beforeFileSize()
{
    Moment const oldest = std::max(view_, shownLength_);
    auto const lengthAt = [&](Moment moment) {
        return history_.contents(TableFile::slots, moment).size();
    };
    Moments alternatives = only(oldest);
    for (Moment moment = oldest + 1; moment <= history_.last(); ++moment) {
        alternatives |= lengthAt(moment) != lengthAt(moment - 1) ? only(moment) : 0;
    }
    shownLength_ = choices_.take(alternatives);
    views_.push_back(view_);
    replay_.apply({TableFile::slots, lengthAt(shownLength_)});
    noteFileSize(shownLength_, shownLength_ != oldest);
}

void WeaklyOrderedMemory::forTightestSpans(std::size_t firstLoad, std::size_t /*lastLoad*/,
                                           SpanCheck const& check) const
{
    check(views_[firstLoad], history_.last());
}

}  // namespace QuaskTesting
