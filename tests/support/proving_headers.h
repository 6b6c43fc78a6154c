#pragma once

#include <cstdint>
#include <cstring>

#include "support/table_layout.h"
#include "support/table_writer.h"

// Headers that prove themselves: a row of changes after which a copy shows whether it is the header
// as it was at one moment. TableWriter says why such a copy is all that a reader can get.
namespace QuaskTesting {

namespace Detail {

template <typename Word>
Word wordAt(void const* bytes, std::uint64_t offset)
{
    Word word;
    std::memcpy(&word, static_cast<char const*>(bytes) + offset, sizeof word);
    return word;
}

}  // namespace Detail

// Gives the header of "vandral.1" its next generation: one more than minSequence is, there, then in
// numReaders, then as the current table. On a table whose vandral header is changed by nothing
// else, and less than 2^32 times.
inline void advanceVandralHeader(TableWriter& writer, std::uint32_t generation)
{
    writer.setMinSequence(generation);
    writer.setNumReaders(generation);
    writer.setCurrentTable(generation);
}

// Whether the 56 bytes of a copy are what the header was at some moment while the calls above
// counted up from 1.
inline bool isVandralHeaderOfOneMoment(void const* copy)
{
    auto const notifications = Detail::wordAt<std::uint64_t>(copy, VandralOffset::notifications);
    auto const currentTable = Detail::wordAt<std::uint64_t>(copy, VandralOffset::currentTable);
    std::uint64_t const fields[] = {
        Detail::wordAt<std::uint64_t>(copy, VandralOffset::minSequence),
        Detail::wordAt<std::uint32_t>(copy, VandralOffset::numReaders),
        pairValue(currentTable),
    };
    std::uint32_t const steps = pairValue(notifications);
    if (pairVersion(notifications) != steps ||
        pairVersion(currentTable) != pairValue(currentTable)) {
        return false;
    }
    for (std::uint32_t i = 0; i < 3; ++i) {
        std::uint32_t const notified = steps / 3 + (i < steps % 3 ? 1 : 0);
        bool const justStored = i == steps % 3 && fields[i] == notified + 1;
        if (fields[i] != notified && !justStored) {
            return false;
        }
    }
    return true;
}

// Gives the slot header its next generation: in `orvik`, then in the lookaside slot's writer's
// word, which lie at either end of what readers copy.
inline void advanceSlotsHeader(TableWriter& writer, std::uint32_t generation)
{
    writer.setSlotsOrvik(generation);
    writer.setLookasideWord(generation);
}

// Whether the 200 bytes of a copy are what the slot header was at some moment after the first of
// the calls above, which count up by one, whatever else the writer did.
inline bool isSlotsHeaderOfOneMoment(void const* copy)
{
    auto const orvik = Detail::wordAt<std::uint32_t>(copy, SlotsOffset::orvik);
    auto const word =
        Detail::wordAt<std::uint32_t>(copy, SlotsOffset::lookaside + RecordOffset::writersWord);
    auto const count = pairValue(Detail::wordAt<std::uint64_t>(copy, SlotsOffset::mappedSlots));
    auto const occupied = Detail::wordAt<std::uint32_t>(copy, SlotsOffset::occupiedSlots);
    auto const freeHead = Detail::wordAt<std::uint32_t>(copy, SlotsOffset::freeHead);
    return (orvik == word || orvik == word + 1) && occupied <= count &&
           (freeHead == noSlot || freeHead < count);
}

}  // namespace QuaskTesting
