#include "support/value_printer.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <map>
#include <string_view>
#include <type_traits>

#include "base/decimal.h"
#include "base/hex.h"

namespace Dovan::Platform {
namespace {

// Room for one element of any type: the longest of the others is -2.2250738585072014e-308.
constexpr std::size_t maxElementText = decimalRoom;

// Writes one character of a text between `quote`s; at most 4 characters. The address behind them.
char* writeCharacter(char* out, unsigned char c, char quote)
{
    auto const escape = [&out](char letter) {
        *out++ = '\\';
        *out++ = letter;
    };
    if (c == static_cast<unsigned char>(quote) || c == '\\') {
        escape(static_cast<char>(c));
    } else if (c >= 0x20 && c <= 0x7e) {
        *out++ = static_cast<char>(c);
    } else if (c == '\n') {
        escape('n');
    } else if (c == '\t') {
        escape('t');
    } else if (c == '\r') {
        escape('r');
    } else {
        constexpr char digits[] = "0123456789abcdef";
        escape('x');
        *out++ = digits[c >> 4];
        *out++ = digits[c & 0xf];
    }
    return out;
}

char* write(char* out, std::string_view text)
{
    return std::copy(text.begin(), text.end(), out);
}

// Writes the text of one T to `out`, which has room for maxElementText characters; the address
// behind the text.
template <typename T>
char* writeElement(char* out, unsigned char const* bytes)
{
    if constexpr (std::is_same_v<T, bool>) {
        return write(out, *bytes == 0 ? "false" : "true");
    } else if constexpr (std::is_same_v<T, char>) {
        *out = '\'';
        out = writeCharacter(out + 1, *bytes, '\'');
        *out = '\'';
        return out + 1;
    } else {
        T value;
        std::memcpy(&value, bytes, sizeof value);
        if constexpr (std::is_integral_v<T>) {
            return Dovan::writeDecimal(out, value);
        } else {
            return std::to_chars(out, out + maxElementText, value).ptr;
        }
    }
}

// The base of all printers.
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

template <typename T>
class ElementPrinter final : public AppendingPrinter
{
public:
    void append(TextBuffer& out, void const* value) const override
    {
        auto const* const bytes = static_cast<unsigned char const*>(value);
        out.advanceTo(writeElement<T>(out.reserve(maxElementText), bytes));
    }
};

template <typename T>
class ArrayPrinter final : public AppendingPrinter
{
public:
    explicit ArrayPrinter(std::size_t count) : count_(count) {}

    void append(TextBuffer& out, void const* value) const override
    {
        auto const* const bytes = static_cast<unsigned char const*>(value);
        std::string_view separator = "{";
        for (std::size_t i = 0; i < count_; ++i) {
            char* end = out.reserve(separator.size() + maxElementText);
            end = write(end, separator);
            out.advanceTo(writeElement<T>(end, bytes + i * sizeof(T)));
            separator = ", ";
        }
        out.append('}');
    }

private:
    std::size_t const count_;  // at least 1
};

class TextPrinter final : public AppendingPrinter
{
public:
    explicit TextPrinter(std::size_t size) : size_(size) {}

    void append(TextBuffer& out, void const* value) const override
    {
        auto const* const bytes = static_cast<unsigned char const*>(value);
        void const* const nul = std::memchr(bytes, 0, size_);
        auto const* const bytesEnd =
            nul == nullptr ? bytes + size_ : static_cast<unsigned char const*>(nul);
        char* end = out.reserve(4 * static_cast<std::size_t>(bytesEnd - bytes) + 2);
        *end++ = '"';
        for (auto const* byte = bytes; byte != bytesEnd; ++byte) {
            end = writeCharacter(end, *byte, '"');
        }
        *end++ = '"';
        out.advanceTo(end);
    }

private:
    std::size_t const size_;
};

class HexPrinter final : public AppendingPrinter
{
public:
    explicit HexPrinter(std::size_t size) : size_(size) {}

    void append(TextBuffer& out, void const* value) const override
    {
        char* const end = out.reserve(dumpHexLength(size_) + dumpHexSlack);
        out.advanceTo(writeDumpHex(end, value, size_));
    }

private:
    std::size_t const size_;
};

// The one printer of its class for this number of elements or bytes. A run asks for few of them: at
// most one a table. They are never destroyed, so that they outlive every user.
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

    // No names of C++, but what a writer means by them is plain.
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

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value is how printers are asked for.
ValuePrinter const* getValuePrinter(std::string typeName, int valueSize)
{
    std::size_t const size = static_cast<unsigned>(valueSize);
    std::string_view name = typeName;
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
            return type.printer();
        }
        if (suffix == arraySuffix(count)) {
            return type.printerOfArray(count);
        }
    }
    return printerFor<HexPrinter>(size);
}

}  // namespace Dovan::Platform
