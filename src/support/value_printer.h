#pragma once

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>

#include "base/text_buffer.h"
#include "support/value_type.h"

namespace Dovan::Platform {

// Turns the bytes of one value into a text of one line. Stateless; lives as long as the program.
class ValuePrinter
{
public:
    // The text of the value at `value`, which has as many bytes as the printer was asked for. The
    // bytes need no alignment and must not change during the call.
    virtual std::string print(void const* value) const = 0;

    // Appends the same text to `out`.
    virtual void append(Dovan::TextBuffer& out, void const* value) const = 0;

    // Writes the same text to `out`, which has `room` characters, at least textRoom() of the
    // value's size; the address after the text. All of the room may be overwritten.
    virtual char* writeText(char* out, std::size_t room, void const* value) const;

    // What the value is, if it is one element whose text is that of ElementText::writeElement():
    // who writes many of them can do so without a call for each. Nothing for any other value.
    virtual std::optional<ElementType> element() const;

    // More than the text of any value of this size in bytes takes.
    static constexpr std::size_t textRoom(std::size_t valueSize) { return 8 * valueSize + 32; }

    // Appends a part of the same text to `out`: that of some ten thousand bytes of the value, from
    // the offset `from` on. The first part is that from 0; the offset that is returned is where the
    // next one begins, `noMore` after the last.
    virtual std::size_t appendPart(Dovan::TextBuffer& out, void const* value,
                                   std::size_t from) const;
    static constexpr std::size_t noMore = ~std::size_t{0};

    // Writes the same text to `out`, with memory for one part of it at a time.
    void writeTo(std::ostream& out, void const* value) const;

protected:
    ~ValuePrinter() = default;
};

// The printer for values of this type name (whole, with or without "std::" before) and size in
// bytes (32 unsigned bits, whatever the sign). Never null: a name that is not known, or whose size
// is another, gets the printer of hexadecimal bytes. The caller does not own it; asked again, it is
// the same.
ValuePrinter const* getValuePrinter(std::string typeName, int valueSize);

}  // namespace Dovan::Platform
