#include "interleave/writer_history.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "support/proving_values.h"
#include "support/table_checks.h"
#include "support/table_files.h"

namespace QuaskTesting {

WriterHistory::WriterHistory(StoreReplay& replay, std::string const& directory,
                             std::vector<StoreStep> stores)
    : stores_(std::move(stores))
{
    if (stores_.size() > latestPossible) {
        throw std::length_error("more stores than a set of moments holds");
    }
    replay.restore();
    keepContents(replay);
    keepElements(directory, 0);
    Moment fenced = 0;
    for (Moment moment = 1; moment <= last(); ++moment) {
        StoreStep const& store = storeBefore(moment);
        fenced = store.fenced ? moment - 1 : fenced;
        shownBy_.push_back(store.released ? moment : fenced);
        replay.apply(store);
        keepContents(replay);
        keepElements(directory, moment);
    }
}

void WriterHistory::keepContents(StoreReplay const& replay)
{
    for (TableFile const file : allTableFiles) {
        contents_[static_cast<std::size_t>(file)].push_back(replay.contents(file));
    }
}

void WriterHistory::keepElements(std::string const& directory, Moment moment)
{
    TableImage const table = TableImage::load(directory);
    for (std::uint32_t bucket = 0; bucket < table.bucketLinks.size(); ++bucket) {
        for (std::uint32_t const slot : slotsFrom(table, table.bucketLinks[bucket].value)) {
            noteElement(bucket, slot, shownValue(table, slot), moment);
        }
    }
}

void WriterHistory::noteElement(std::uint32_t bucket, std::uint32_t slot, std::string const& value,
                                Moment moment)
{
    auto const proven = provenBy(value);
    if (!proven) {
        throw std::logic_error("a value that does not prove itself");
    }
    auto const presence = std::find_if(presences_.begin(), presences_.end(), [&](auto const& each) {
        return each.bucket == bucket && each.key == proven->key;
    });
    if (presence == presences_.end()) {
        presences_.push_back({bucket, proven->key, only(moment)});
    } else {
        presence->moments |= only(moment);
    }
    for (Occurrence& each : occurrences_) {
        if (each.bucket == bucket && each.slot == slot && each.value == value) {
            each.moments |= only(moment);
            return;
        }
    }
    occurrences_.push_back({bucket, slot, value, only(moment)});
}

Moments WriterHistory::momentsOf(std::uint32_t bucket, std::uint32_t slot,
                                 std::string_view value) const
{
    for (Occurrence const& each : occurrences_) {
        if (each.bucket == bucket && each.slot == slot && each.value == value) {
            return each.moments;
        }
    }
    return 0;
}

Moments WriterHistory::storesTo(Place const& place) const
{
    Moments moments = 0;
    for (Moment moment = 1; moment <= last(); ++moment) {
        StoreStep const& store = storeBefore(moment);
        if (store.file == place.file && store.offset < place.offset + place.size &&
            place.offset < store.offset + store.bytes.size()) {
            moments |= only(moment);
        }
    }
    return moments;
}

std::uint64_t WriterHistory::wordAt(Place const& place, Moment moment) const
{
    std::string const& bytes = contents(place.file, moment);
    std::uint64_t word = 0;
    if (place.offset < bytes.size()) {
        std::memcpy(&word, bytes.data() + place.offset,
                    std::min<std::size_t>(place.size, bytes.size() - place.offset));
    }
    return word;
}

}  // namespace QuaskTesting
