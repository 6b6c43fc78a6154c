#include "support/value_printer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <string_view>
#include <type_traits>

#include "base/hex.h"
#include "support/appending_printer.h"
#include "support/element_text.h"
#include "support/value_type.h"

namespace Dovan::Platform {
namespace {

using ElementText::maxElementText;
using ElementText::write;
using ElementText::writeCharacter;
using ElementText::writeElement;

// The room of a text suffices where the longest text is reserved for an array's last element.
static_assert(ValuePrinter::textRoom(1) > maxElementText + 2);

// What T is to a program that needs more than its text, if there is a word for it.
template <typename T>
constexpr std::optional<ElementType> elementTypeOf()
{
    if constexpr (std::is_same_v<T, bool>) {
        return ElementType::boolean;
    } else if constexpr (std::is_same_v<T, char>) {
        return ElementType::character;
    } else if constexpr (std::is_floating_point_v<T>) {
        return sizeof(T) == 4 ? ElementType::float32 : ElementType::float64;
    } else if constexpr (std::is_integral_v<T>) {
        constexpr bool isSigned = std::is_signed_v<T>;
        switch (sizeof(T)) {
            case 1:
                return isSigned ? ElementType::int8 : ElementType::uint8;
            case 2:
                return isSigned ? ElementType::int16 : ElementType::uint16;
            case 4:
                return isSigned ? ElementType::int32 : ElementType::uint32;
            default:
                return isSigned ? ElementType::int64 : ElementType::uint64;
        }
    } else {
        return std::nullopt;
    }
}

template <typename T>
class ElementPrinter final : public AppendingPrinter
{
public:
    void append(TextBuffer& out, void const* value) const override
    {
        out.advanceTo(writeText(out.reserve(maxElementText), maxElementText, value));
    }

    // Without a buffer in between a scan of numbers takes a twentieth less time.
    char* writeText(char* out, std::size_t /*room*/, void const* value) const override
    {
        return writeElement<T>(out, static_cast<unsigned char const*>(value));
    }

    std::optional<ElementType> element() const override { return elementTypeOf<T>(); }
};

template <typename T>
class ArrayPrinter final : public AppendingPrinter
{
public:
    explicit ArrayPrinter(std::size_t count) : count_(count) {}

    void append(TextBuffer& out, void const* value) const override
    {
        appendElements(out, value, 0, count_ * sizeof(T));
        out.append('}');
    }

    std::size_t appendPart(TextBuffer& out, void const* value, std::size_t from) const override
    {
        std::size_t const end = std::min(from + valuePartSize, count_ * sizeof(T));
        appendElements(out, value, from, end);
        if (end < count_ * sizeof(T)) {
            return end;
        }
        out.append('}');
        return noMore;
    }

private:
    // Those between two offsets, each with what separates it from the one before.
    [[gnu::always_inline]] static void appendElements(TextBuffer& out, void const* value,
                                                      std::size_t from, std::size_t to)
    {
        auto const* const bytes = static_cast<unsigned char const*>(value);
        std::string_view separator = from == 0 ? "{" : ", ";
        for (std::size_t i = from / sizeof(T); i < to / sizeof(T); ++i) {
            char* end = out.reserve(separator.size() + maxElementText);
            end = write(end, separator);
            out.advanceTo(writeElement<T>(end, bytes + i * sizeof(T)));
            separator = ", ";
        }
    }

    std::size_t const count_;  // at least 1
};

class TextPrinter final : public AppendingPrinter
{
public:
    explicit TextPrinter(std::size_t size) : size_(size) {}

    void append(TextBuffer& out, void const* value) const override
    {
        out.append('"');
        appendCharacters(out, value, 0, size_);
        out.append('"');
    }

    std::size_t appendPart(TextBuffer& out, void const* value, std::size_t from) const override
    {
        if (from == 0) {
            out.append('"');
        }
        std::size_t const end = std::min(from + valuePartSize, size_);
        bool const ended = appendCharacters(out, value, from, end);
        if (!ended && end < size_) {
            return end;
        }
        out.append('"');
        return noMore;
    }

private:
    // Those between two offsets, up to the first NUL. Whether there was one.
    static bool appendCharacters(TextBuffer& out, void const* value, std::size_t from,
                                 std::size_t to)
    {
        auto const* const bytes = static_cast<unsigned char const*>(value) + from;
        void const* const nul = std::memchr(bytes, 0, to - from);
        auto const* const bytesEnd =
            nul == nullptr ? bytes + (to - from) : static_cast<unsigned char const*>(nul);
        char* end = out.reserve(4 * static_cast<std::size_t>(bytesEnd - bytes));
        for (auto const* byte = bytes; byte != bytesEnd; ++byte) {
            end = writeCharacter(end, *byte, '"');
        }
        out.advanceTo(end);
        return nul != nullptr;
    }

    std::size_t const size_;
};

class HexPrinter final : public AppendingPrinter
{
public:
    explicit HexPrinter(std::size_t size) : size_(size) {}

    void append(TextBuffer& out, void const* value) const override
    {
        appendBytes(out, value, size_);
    }

    char* writeText(char* out, std::size_t /*room*/, void const* value) const override
    {
        return writeDumpHex(out, value, size_);
    }

    std::size_t appendPart(TextBuffer& out, void const* value, std::size_t from) const override
    {
        static_assert(valuePartSize % 4 == 0, "a space lies between two parts");
        if (from != 0) {
            out.append(' ');
        }
        std::size_t const end = std::min(from + valuePartSize, size_);
        appendBytes(out, static_cast<unsigned char const*>(value) + from, end - from);
        return end < size_ ? end : noMore;
    }

private:
    static void appendBytes(TextBuffer& out, void const* bytes, std::size_t count)
    {
        char* const end = out.reserve(dumpHexLength(count) + dumpHexSlack);
        out.advanceTo(writeDumpHex(end, bytes, count));
    }

    std::size_t const size_;
};

// The one printer of its class for this number of elements or bytes. A run asks for few of them: at
// most one per table. They are never destroyed, so that they outlive every user.
template <typename Printer>
ValuePrinter const* printerFor(std::size_t count)
{
    static auto& printers = *new std::map<std::size_t, Printer>;
    return &printers.try_emplace(count, count).first->second;
}

template <typename T>
ValuePrinter const* elementPrinter()
{
    static ElementPrinter<T> const printer;
    return &printer;
}

template <typename T>
ValuePrinter const* arrayPrinter(std::size_t count)
{
    using Printer = std::conditional_t<std::is_same_v<T, char>, TextPrinter, ArrayPrinter<T>>;
    return printerFor<Printer>(count);
}

struct NamedType
{
    std::string_view name;
    std::size_t size;
    ValuePrinter const* (*printer)();
    ValuePrinter const* (*printerOfArray)(std::size_t count);
};

template <typename T>
constexpr NamedType named(std::string_view name)
{
    return {name, sizeof(T), elementPrinter<T>, arrayPrinter<T>};
}

constexpr NamedType knownTypes[] = {
    named<bool>("bool"),
    named<char>("char"),
    named<float>("float"),
    named<double>("double"),

    named<signed char>("signed char"),
    named<short>("short"),
    named<int>("int"),
    named<long>("long"),
    named<long long>("long long"),
    named<std::int8_t>("int8_t"),
    named<std::int16_t>("int16_t"),
    named<std::int32_t>("int32_t"),
    named<std::int64_t>("int64_t"),

    named<unsigned char>("unsigned char"),
    named<unsigned short>("unsigned short"),
    named<unsigned>("unsigned"),
    named<unsigned>("unsigned int"),
    named<unsigned long>("unsigned long"),
    named<unsigned long long>("unsigned long long"),
    named<std::uint8_t>("uint8_t"),
    named<std::uint16_t>("uint16_t"),
    named<std::uint32_t>("uint32_t"),
    named<std::uint64_t>("uint64_t"),

    // Not names of C++, but what a writer means by them is plain.
    named<std::uint8_t>("unsigned int8_t"),
    named<std::uint16_t>("unsigned int16_t"),
    named<std::uint32_t>("unsigned int32_t"),
    named<std::uint64_t>("unsigned int64_t"),
};

// What follows the element's name in the name of an array. Comparing with it, instead of reading a
// number, leaves no number too large and no second way to write one.
std::string arraySuffix(std::size_t count)
{
    return "[" + std::to_string(count) + "]";
}

// A type of knownTypes that a value has, or whose array it is.
struct Known
{
    NamedType const* type;
    std::size_t count;  // of elements, at least 1
    bool isArray;
};

// Nothing for a name that is not known, or whose size is another.
std::optional<Known> findKnownType(std::string_view name, std::size_t size)
{
    if (name.starts_with("std::")) {
        name.remove_prefix(5);
    }
    for (NamedType const& type : knownTypes) {
        std::size_t const count = size / type.size;
        if (count == 0 || count * type.size != size || !name.starts_with(type.name)) {
            continue;
        }
        std::string_view const suffix = name.substr(type.name.size());
        if (count == 1 && suffix.empty()) {
            return Known{&type, 1, false};
        }
        if (suffix == arraySuffix(count)) {
            return Known{&type, count, true};
        }
    }
    return std::nullopt;
}

}  // namespace

char* ValuePrinter::writeText(char* out, std::size_t room, void const* value) const
{
    TextBuffer text;
    text.useMemory(out, room);
    append(text, value);
    return out + text.size();
}

std::optional<ElementType> ValuePrinter::element() const
{
    return std::nullopt;
}

std::size_t ValuePrinter::appendPart(TextBuffer& out, void const* value, std::size_t /*from*/) const
{
    append(out, value);
    return noMore;
}

void ValuePrinter::writeTo(std::ostream& out, void const* value) const
{
    TextBuffer part;
    for (std::size_t from = 0; from != noMore;) {
        part.clear();
        from = appendPart(part, value, from);
        out.write(part.view().data(), static_cast<std::streamsize>(part.size()));
    }
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value is how printers are asked for.
ValuePrinter const* getValuePrinter(std::string typeName, int valueSize)
{
    std::size_t const size = static_cast<unsigned>(valueSize);
    std::optional<Known> const known = findKnownType(typeName, size);
    if (!known) {
        return printerFor<HexPrinter>(size);
    }
    return known->isArray ? known->type->printerOfArray(known->count) : known->type->printer();
}

std::optional<ValueType> findValueType(std::string_view typeName, std::size_t valueSize)
{
    std::optional<Known> const known = findKnownType(typeName, valueSize);
    auto const element = known ? known->type->printer()->element() : std::nullopt;
    if (!element) {
        return std::nullopt;
    }
    return ValueType{*element, known->count, known->isArray};
}

}  // namespace Dovan::Platform
