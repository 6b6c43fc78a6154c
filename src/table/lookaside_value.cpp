#include "table/lookaside_value.h"

#include <algorithm>
#include <cstddef>
#include <new>

namespace Quask {

LookasideValue::LookasideValue(SlotReaderGenericTable const& slots,
                               SlotTable<EmptyValue>::Header const& header)
    : size_(std::min<std::size_t>(header.valueSize, slots.lookasideSize()))
{
    bytes_ = Dovan::allocateZeroed(size_ + 1);
    if (bytes_ == nullptr) {
        throw std::bad_alloc();
    }
    slots.copyLookasideValue(bytes_.get(), size_);
    if (size_ == header.valueSize) {
        typeName_ = header.textOf(header.valueType);
    }
    // No type has an empty name: the bytes are shown as such.
    printer_ = Dovan::Platform::getValuePrinter(typeName_, static_cast<int>(size_));
}

}  // namespace Quask
