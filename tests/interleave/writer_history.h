#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "interleave/moments.h"
#include "support/store_recorder.h"
#include "support/table_layout.h"

namespace QuaskTesting {

// A word of a table's file.
struct Place
{
    TableFile file;
    std::uint64_t offset;
    std::size_t size;  // bytes, at most 8
    bool operator==(Place const&) const = default;
};

// A table at every moment of a writer's run, before the first store and after each: the bytes of
// its files, and what a reader finds that meets a writer at rest.
class WriterHistory
{
public:
    // Makes the stores, at most 63, in the table in `directory`, from the contents that `replay`
    // keeps on. Throws when these are too many or the table is damaged at a moment.
    WriterHistory(StoreReplay& replay, std::string const& directory, std::vector<StoreStep> stores);

    Moment last() const { return static_cast<Moment>(stores_.size()); }

    // The store that led to the moment; there is none for moment 0.
    StoreStep const& storeBefore(Moment moment) const { return stores_[moment - 1]; }

    // The last moment whose stores are all seen by who sees the store that led to `moment`, and
    // then passes an acquire fence or had loaded it with acquire.
    Moment shownBy(Moment moment) const { return shownBy_[moment - 1]; }

    // The moments after the stores that changed some of these bytes.
    Moments storesTo(Place const& place) const;

    // The word's bytes, the first in the low ones; what is after the file's end is 0.
    std::uint64_t wordAt(Place const& place, Moment moment) const;

    std::string const& contents(TableFile file, Moment moment) const
    {
        return contents_[static_cast<std::size_t>(file)][moment];
    }

    // When the slot was in the bucket's chain with just this value.
    Moments momentsOf(std::uint32_t bucket, std::uint32_t slot, std::string_view value) const;

    // When the element, as its value says, was in the bucket's chain.
    struct Presence
    {
        std::uint32_t bucket;
        std::uint32_t key;
        Moments moments;
    };
    std::vector<Presence> const& presences() const { return presences_; }

private:
    struct Occurrence
    {
        std::uint32_t bucket;
        std::uint32_t slot;
        std::string value;
        Moments moments;
    };

    void keepContents(StoreReplay const& replay);
    void keepElements(std::string const& directory, Moment moment);
    void noteElement(std::uint32_t bucket, std::uint32_t slot, std::string const& value,
                     Moment moment);

    std::vector<StoreStep> stores_;
    std::vector<Moment> shownBy_;
    std::array<std::vector<std::string>, allTableFiles.size()> contents_;
    std::vector<Occurrence> occurrences_;
    std::vector<Presence> presences_;
};

}  // namespace QuaskTesting
