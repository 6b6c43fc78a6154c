#pragma once

#include <cstddef>
#include <string>

#include "table/bucket_table.h"
#include "table/slot_table.h"
#include "table/vandral.h"

// The headers of a table's files as text, whatever they hold. Each function replaces `out` with
// lines that begin behind a title of the caller's: the first is the header's size. Throws
// std::bad_alloc only.
namespace Quask::QuaskTest {

// `live` may be a mapped header.
void formatBucketsHeader(BucketTable::Header const& live, std::string& out);

// `live` is a mapped header, of which a consistent copy is shown; the value in its lookaside slot
// is read behind it, as far as `readable` bytes from the header's start on reach.
void formatSlotsHeader(SlotTable<EmptyValue>::Header const& live, std::size_t readable,
                       std::string& out);

// `header` is a consistent copy.
void formatVandralHeader(Vandral::Header const& header, std::string& out);

}  // namespace Quask::QuaskTest
