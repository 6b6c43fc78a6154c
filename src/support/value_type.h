#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <type_traits>

namespace Dovan::Platform {

// What one element of a value is. Types of several names are one here: a long is an int64.
enum class ElementType
{
    boolean,
    character,
    float32,
    float64,
    int8,
    int16,
    int32,
    int64,
    uint8,
    uint16,
    uint32,
    uint64,
};

// A type of values that can be shown as more than bytes.
struct ValueType
{
    ElementType element;
    std::size_t count;  // of elements, at least 1
    bool isArray;       // one of a single element, too
};

// The type of this name (whole, with or without "std::" before it) whose values have this size in
// bytes. Nothing where getValuePrinter() has a printer of hexadecimal bytes, or one of a type that
// has no ElementType.
std::optional<ValueType> findValueType(std::string_view typeName, std::size_t valueSize);

// What `visitor` returns for the std::type_identity of the C++ type that an element has in memory.
template <typename Visitor>
auto visitElementType(ElementType type, Visitor visitor)
{
    switch (type) {
        case ElementType::boolean:
            return visitor(std::type_identity<bool>());
        case ElementType::character:
            return visitor(std::type_identity<char>());
        case ElementType::float32:
            return visitor(std::type_identity<float>());
        case ElementType::float64:
            return visitor(std::type_identity<double>());
        case ElementType::int8:
            return visitor(std::type_identity<std::int8_t>());
        case ElementType::int16:
            return visitor(std::type_identity<std::int16_t>());
        case ElementType::int32:
            return visitor(std::type_identity<std::int32_t>());
        case ElementType::int64:
            return visitor(std::type_identity<std::int64_t>());
        case ElementType::uint8:
            return visitor(std::type_identity<std::uint8_t>());
        case ElementType::uint16:
            return visitor(std::type_identity<std::uint16_t>());
        case ElementType::uint32:
            return visitor(std::type_identity<std::uint32_t>());
        case ElementType::uint64:
            return visitor(std::type_identity<std::uint64_t>());
    }
    std::abort();
}

}  // namespace Dovan::Platform
