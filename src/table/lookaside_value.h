#pragma once

#include <ostream>

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

private:
    Dovan::ZeroedBytes bytes_;
    Dovan::Platform::ValuePrinter const* printer_;
};

}  // namespace Quask
