#pragma once

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include <rapidjson/writer.h>

#include "base/hex.h"
#include "json/lenient_utf8.h"
#include "json/streams.h"
#include "support/element_text.h"
#include "support/value_type.h"

// Copies what needs no escape at once, as RapidJSON does for its own buffer. There is room for it.
template <>
inline bool rapidjson::Writer<
    Quask::Json::RoomyText, Quask::Json::LenientUtf8,
    rapidjson::ASCII<>>::ScanWriteUnescapedString(GenericStringStream<Quask::Json::LenientUtf8>& is,
                                                  std::size_t length)
{
    char const* const end = is.head_ + length;
    char* out = os_->reserve(0);
    while (is.src_ != end && *is.src_ >= ' ' && *is.src_ <= '~' && *is.src_ != '"' &&
           *is.src_ != '\\') {
        *out++ = *is.src_++;
    }
    os_->advanceTo(out);
    return is.src_ != end;
}

namespace Quask::Json {

// Characters that the text of a value of this size in bytes may overwrite. No byte makes more than
// six of them, in a string (\u001f) as in an array (false,).
constexpr std::size_t valueRoom(std::size_t valueSize)
{
    return 6 * valueSize + 2 + Dovan::Platform::ElementText::maxElementText;
}

// Writes JSON to a Stream, RoomyText or PiecewiseText: RapidJSON's writer with what reports are
// made of. The text is ASCII and has no newline, whatever the contents are. One thread.
template <typename Stream>
class JsonWriter : private rapidjson::Writer<Stream, LenientUtf8, rapidjson::ASCII<>>
{
    using Base = rapidjson::Writer<Stream, LenientUtf8, rapidjson::ASCII<>>;

public:
    // `stream` must outlive the object.
    explicit JsonWriter(Stream& stream) : Base(stream) {}

    void beginObject() { this->StartObject(); }
    void endObject() { this->EndObject(); }
    void beginArray() { this->StartArray(); }
    void endArray() { this->EndArray(); }

    // The name of an object's next member: ASCII that needs no escape.
    void name(std::string_view text)
    {
        this->Prefix(rapidjson::kStringType);
        char* out = this->os_->reserve(text.size() + 2);
        *out = '"';
        std::memcpy(out + 1, text.data(), text.size());
        out[text.size() + 1] = '"';
        this->os_->advanceTo(out + text.size() + 2);
    }

    // A number as it is, up to 64 bits wide, or true or false.
    template <std::integral Number>
    void value(Number number)
    {
        this->Prefix(rapidjson::kNumberType);
        put(number);
    }

    // A string. `text` is followed by a NUL.
    void value(std::string_view text)
    {
        this->Prefix(rapidjson::kStringType);
        put(text);
    }

    // What the bytes of a value of this type say: see put().
    void value(Dovan::Platform::ValueType const& type, unsigned char const* bytes)
    {
        this->Prefix(rapidjson::kNumberType);
        put(type, bytes);
    }

    // A string of two lower-case hexadecimal digits per byte.
    void hex(unsigned char const* bytes, std::size_t size)
    {
        constexpr std::size_t pieceSize = 4096;
        this->Prefix(rapidjson::kStringType);
        this->os_->Put('"');
        for (std::size_t done = 0; done < size;) {
            std::size_t const count = std::min(pieceSize, size - done);
            char* const out = this->os_->reserve(2 * count + Dovan::hexDigitsSlack);
            this->os_->advanceTo(Dovan::writeHexDigits(out, bytes + done, count));
            done += count;
        }
        this->os_->Put('"');
    }

    void null() { this->Null(); }

    template <typename Value>
    void member(std::string_view memberName, Value const& memberValue)
    {
        name(memberName);
        value(memberValue);
    }

    // The same where all else of the text is written by hand: a number, null for one that is not
    // finite, true or false, a string for characters up to the first NUL, an array of these. The
    // bytes need no alignment; a NUL follows those of characters.
    void put(Dovan::Platform::ValueType const& type, unsigned char const* bytes)
    {
        Dovan::Platform::visitElementType(
            type.element, [&]<typename T>(std::type_identity<T> /*element*/) {
                if constexpr (std::is_same_v<T, char>) {
                    auto const* const text = reinterpret_cast<char const*>(bytes);
                    put(std::string_view(text, type.isArray ? strnlen(text, type.count) : 1));
                } else if (type.isArray) {
                    for (std::size_t i = 0; i < type.count; ++i) {
                        this->os_->Put(i == 0 ? '[' : ',');
                        putElement<T>(bytes + i * sizeof(T));
                    }
                    this->os_->Put(']');
                } else {
                    putElement<T>(bytes);
                }
            });
    }

    // Writes one T, not char, to memory that has room for maxElementText characters; the address
    // after it. The texts of numbers and truth values are JSON as they are.
    template <typename T>
    static char* write(char* out, unsigned char const* bytes)
    {
        if constexpr (std::is_floating_point_v<T>) {
            T number;
            std::memcpy(&number, bytes, sizeof number);
            if (!std::isfinite(number)) {
                return Dovan::Platform::ElementText::write(out, "null");
            }
        }
        return Dovan::Platform::ElementText::writeElement<T>(out, bytes);
    }

private:
    template <std::integral Number>
    void put(Number number)
    {
        putElement<Number>(reinterpret_cast<unsigned char const*>(&number));
    }

    void put(std::string_view text)
    {
        this->WriteString(text.empty() ? "" : text.data(),
                          static_cast<rapidjson::SizeType>(text.size()));
    }

    template <typename T>
    void putElement(unsigned char const* bytes)
    {
        char* const out = this->os_->reserve(Dovan::Platform::ElementText::maxElementText);
        this->os_->advanceTo(write<T>(out, bytes));
    }
};

}  // namespace Quask::Json
