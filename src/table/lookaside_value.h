#pragma once

#include <cstddef>
#include <ostream>
#include <string>

#include "base/zeroed_bytes.h"
#include "support/value_printer.h"
#include "table/slot_reader_generic_table.h"
#include "table/slot_table.h"

namespace Quask {

// A copy of the value in a slot file's lookaside slot. A writer may rewrite it while it is copied:
// nothing in a slot file says that a lookaside value is whole. One thread.
class LookasideValue
{
public:
    // The value has the type and the size that `header` says, a consistent copy of the mapped
    // header of `slots`, which must be attached. Where the mapping ends before the value does, the
    // bytes there are. Throws std::bad_alloc.
    LookasideValue(SlotReaderGenericTable const& slots,
                   SlotTable<EmptyValue>::Header const& header);

    // Writes its text, one line without the newline: by its type, or in hexadecimal when bytes are
    // missing.
    void printTo(std::ostream& out) const { printer_->writeTo(out, bytes_.get()); }

    // The bytes, and after them one that is 0; valid as long as the object.
    unsigned char const* bytes() const { return bytes_.get(); }
    std::size_t size() const { return size_; }

    // The name of its type; empty when bytes are missing.
    std::string const& typeName() const { return typeName_; }

private:
    Dovan::ZeroedBytes bytes_;
    std::size_t size_;
    std::string typeName_;
    Dovan::Platform::ValuePrinter const* printer_;
};

}  // namespace Quask
