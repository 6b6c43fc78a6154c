#pragma once

#include <cstddef>
#include <string>

#include "base/text_buffer.h"
#include "support/value_printer.h"

namespace Dovan::Platform {

// Bytes of a value whose text is one part of a large text; a multiple of each type's size.
inline constexpr std::size_t valuePartSize = std::size_t{32} * 1024;

// The base of all printers: what they append is also what they print. A printer whose values may be
// larger than a part overrides appendPart(), too.
class AppendingPrinter : public ValuePrinter
{
public:
    std::string print(void const* value) const final
    {
        TextBuffer text;
        append(text, value);
        return std::string(text.view());
    }

protected:
    ~AppendingPrinter() = default;
};

}  // namespace Dovan::Platform
