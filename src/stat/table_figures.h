#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "stat/file_identity.h"
#include "table/bucket_table.h"
#include "table/slot_table.h"
#include "table/vandral.h"

namespace Quask::Stat {

// The headers of the bucket file and the slot file, each a consistent copy that has passed the
// checks of a scan.
struct MainHeaders
{
    BucketTable::Header buckets;
    SlotTable<EmptyValue>::Header slots;
};

// Those of vandral.1 and vandral.2, which nothing checks.
struct NotificationHeaders
{
    Vandral::Header primary;
    Vandral::Header secondary;
};

// What the writer adds to the lookaside slot's sequence with each update.
inline constexpr std::uint32_t stepOfUpdate = 4;

// What the files of one table say without a walk. What could be read is there; `problem` says in
// words why something is not.
struct TableFigures
{
    std::optional<MainHeaders> main;
    std::optional<NotificationHeaders> notifications;
    std::string problem;  // "slots: Permission denied"; empty when all could be read

    // The files that there are, in the order of `tableFileNames`, and the bytes of all of them.
    std::array<std::optional<FileIdentity>, 5> files;
    std::uint64_t fileBytes = 0;

    // Whether the files were not all made together: their creator stamps differ.
    bool isMixed() const;

    // Whether no element can be added: no slot is free, and there are as many as there may be.
    bool isFull() const;

    // Slots that hold an element, in hundredths of the most that there may be, rounded down;
    // nothing when there may be none.
    std::optional<std::uint64_t> percentUsed() const;

    // How often a value was rewritten in place, modulo 2^30.
    std::optional<std::uint64_t> updates() const;

    // The notifications of both notification tables together, each modulo 2^32.
    std::optional<std::uint64_t> notificationCount() const;
};

inline constexpr std::array<char const*, 5> tableFileNames{"buckets", "slots", "vandral.1",
                                                           "vandral.2", "orvik"};

// Reads those of the table of this name. All figures are of one table, whose files may be replaced
// at any time.
TableFigures readTableFigures(std::string const& tableName);

// Whether the table of this name still has the files that the figures were read from.
bool hasFilesOf(std::string const& tableName, TableFigures const& figures);

}  // namespace Quask::Stat
