#pragma once

#include <string>

#include "table/bucket_table.h"
#include "table/slot_table.h"
#include "table/vandral.h"

// The headers of a table's files as text, whatever they say. Each function replaces `out` with
// lines that begin after a title of the caller's: the first is the header's size. Throws
// std::bad_alloc only.
namespace Quask::QuaskTest {

// `live` may be a mapped header.
void formatBucketsHeader(BucketTable::Header const& live, std::string& out);

// `header` is a consistent copy. Its last line is without the lookaside value and its newline.
void formatSlotsHeader(SlotTable<EmptyValue>::Header const& header, std::string& out);

// `header` is a consistent copy.
void formatVandralHeader(Vandral::Header const& header, std::string& out);

}  // namespace Quask::QuaskTest
