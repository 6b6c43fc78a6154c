#pragma once

#include <cstddef>
#include <string>

#include "interleave/scenario.h"
#include "support/recording_handler.h"
#include "table/vandral_reader_generic.h"

namespace QuaskTesting {

// Whether the copy of a file's first `size` bytes, which an execution's loads have made, is what
// the file held at a moment while it was made, in all schedules of the execution; if not, what it
// is.
std::string violationInCopy(ScheduledMemory const& memory, TableFile file, void const* copy,
                            std::size_t size);

// Copies the slot header once, by its own code, and returns what `check` finds wrong with it.
template <typename Check>
std::string copySlotHeader(ScheduledMemory& memory, Check&& check)
{
    Quask::QuaskReaderGeneric reader(SmallTable::tableName);
    if (!reader.attach()) {
        return "the table cannot be attached";
    }
    SchedulesLoads const scheduling(memory, placesIn(reader));
    Quask::SlotTable<Quask::EmptyValue>::Header const copy(reader.liveSlotsHeader());
    return check(memory, copy);
}

// The same for the header of "vandral.1".
template <typename Check>
std::string copyVandralHeader(ScheduledMemory& memory, Check&& check)
{
    RecordingHandler handler(-1);
    Quask::RootPath const path(handler, SmallTable::tableName, false);
    Quask::VandralReaderGeneric reader(handler, path);
    if (!reader.attach()) {
        return "the table cannot be attached";
    }
    auto const* const start = reinterpret_cast<char const*>(reader.primaryHeader);
    SchedulesLoads const scheduling(memory, [&](void const* address) {
        auto const offset = static_cast<char const*>(address) - start;
        return std::pair{TableFile::vandral1, static_cast<std::uint64_t>(offset)};
    });
    Quask::Vandral::Header const copy(*reader.primaryHeader);
    return check(memory, copy);
}

// The check that it is the header of one moment.
constexpr auto isOfOneMoment = [](ScheduledMemory const& memory, auto const& copy) {
    constexpr bool ofSlots = sizeof copy == sizeof(Quask::SlotTable<Quask::EmptyValue>::Header);
    return violationInCopy(memory, ofSlots ? TableFile::slots : TableFile::vandral1, &copy,
                           sizeof copy);
};

}  // namespace QuaskTesting
