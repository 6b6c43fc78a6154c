#include "table/lookaside_value.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>

namespace Quask {

LookasideValue::LookasideValue(SlotReaderGenericTable const& slots,
                               SlotTable<EmptyValue>::Header const& header)
{
    std::size_t const size = std::min<std::size_t>(header.valueSize, slots.lookasideSize());
    bytes_ = Dovan::allocateZeroed(size);
    if (bytes_ == nullptr) {
        throw std::bad_alloc();
    }
    slots.copyLookasideValue(bytes_.get(), size);
    // No type has an empty name: the bytes are shown as such.
    std::string const type =
        size == header.valueSize ? header.textOf(header.valueType) : std::string();
    printer_ = Dovan::Platform::getValuePrinter(type, static_cast<int>(size));
}

}  // namespace Quask
