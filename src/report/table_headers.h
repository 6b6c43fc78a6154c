#pragma once

#include <optional>
#include <string>

#include "base/debug_handler.h"
#include "table/bucket_table.h"
#include "table/lookaside_value.h"
#include "table/slot_table.h"
#include "table/vandral.h"

namespace Quask {

// The headers of a table's four files, each a consistent copy of what the writer left, whatever
// that is: nothing is validated. All four are of one table. Nothing in it lies in a mapping.
struct TableHeaders
{
    std::string directory;  // of the table's files
    BucketTable::Header buckets;
    SlotTable<EmptyValue>::Header slots;
    LookasideValue lookasideValue;  // of the type and size that `slots` says
    Vandral::Header primary;        // vandral.1
    Vandral::Header secondary;      // vandral.2
};

// Attaches the four files of the table of this name and copies their headers. Nothing, with a line
// on standard error, when a file cannot be attached. `handler` is the scanner's channel. Throws
// std::bad_alloc when there is no memory for the lookaside value.
std::optional<TableHeaders> readTableHeaders(Dovan::Platform::DebugHandler& handler,
                                             std::string const& name);

}  // namespace Quask
