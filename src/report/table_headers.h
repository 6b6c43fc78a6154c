#pragma once

#include <optional>
#include <string>

#include "base/debug_handler.h"
#include "table/bucket_table.h"
#include "table/lookaside_value.h"
#include "table/quask_reader_generic.h"
#include "table/slot_table.h"
#include "table/vandral.h"
#include "table/vandral_reader_generic.h"

namespace Quask {

// The headers of a table's four files, each a consistent copy of what the writer left, whatever
// that is: nothing is validated. All four are of one table. Nothing in it is in a mapping.
struct TableHeaders
{
    std::string directory;  // of the table's files
    BucketTable::Header buckets;
    SlotTable<EmptyValue>::Header slots;
    LookasideValue lookasideValue;  // of the type and size that `slots` says
    Vandral::Header primary;        // vandral.1
    Vandral::Header secondary;      // vandral.2
};

namespace QuaskTest {

// Copies the headers; the directory is left empty. Precondition: both readers are attached. Throws
// std::bad_alloc when there is no memory for the lookaside value.
TableHeaders getHeaders(QuaskReaderGeneric const& reader, VandralReaderGeneric const& vandral);

}  // namespace QuaskTest

// Attaches the four files of the table of this name and copies their headers. Nothing, with a line
// on standard error, when a file cannot be attached. `handler` is the scanner's channel. Throws
// as getHeaders() does.
std::optional<TableHeaders> readTableHeaders(Dovan::Platform::DebugHandler& handler,
                                             std::string const& name);

}  // namespace Quask
