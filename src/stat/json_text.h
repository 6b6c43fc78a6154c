#pragma once

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "stat/safe_text.h"

namespace Quask::Stat {

// A JSON text in memory, by RapidJSON's writer: ASCII whatever it is made of, and indented as
// libsmartcols indents rows. Names of members are ASCII. One thread.
class JsonText
{
public:
    JsonText() : writer_(buffer_)
    {
        constexpr unsigned indent = 3;
        constexpr int decimals = 6;  // the rest is cut off
        writer_.SetIndent(' ', indent);
        writer_.SetMaxDecimalPlaces(decimals);
    }

    // What was written, with a newline at its end.
    std::string text() const { return buffer_.GetString() + std::string("\n"); }

    // An object; `body` writes its members.
    template <typename Body>
    void object(Body body)
    {
        writer_.StartObject();
        body();
        writer_.EndObject();
    }

    template <typename Body>
    void object(char const* name, Body body)
    {
        writer_.Key(name);
        object(body);
    }

    // The same of what may not be there, which `body` is given; null where it is not.
    template <typename Value, typename Body>
    void object(char const* name, std::optional<Value> const& value, Body body)
    {
        if (value) {
            object(name, [&] { body(*value); });
        } else {
            nullMember(name);
        }
    }

    // A list of objects; `body` is given an element and writes the members of its object.
    template <typename Range, typename Body>
    void array(char const* name, Range const& range, Body body)
    {
        writer_.Key(name);
        writer_.StartArray();
        for (auto const& element : range) {
            object([&] { body(element); });
        }
        writer_.EndArray();
    }

    // An integer, or true or false.
    template <std::integral Value>
    void member(char const* name, Value value)
    {
        writer_.Key(name);
        if constexpr (std::same_as<Value, bool>) {
            writer_.Bool(value);
        } else if constexpr (std::unsigned_integral<Value>) {
            writer_.Uint64(value);
        } else {
            writer_.Int64(value);
        }
    }

    // A finite number.
    void member(char const* name, double number)
    {
        writer_.Key(name);
        writer_.Double(number);
    }

    // A string, with U+FFFD for each byte that is not UTF-8.
    void member(char const* name, std::string_view text)
    {
        std::string const valid = utf8Text(text);
        writer_.Key(name);
        writer_.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
    }

    // A number whose text is JSON.
    void numberMember(char const* name, std::string_view text)
    {
        writer_.Key(name);
        writer_.RawValue(text.data(), text.size(), rapidjson::kNumberType);
    }

    void nullMember(char const* name)
    {
        writer_.Key(name);
        writer_.Null();
    }

private:
    rapidjson::StringBuffer buffer_;
    rapidjson::PrettyWriter<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::ASCII<>> writer_;
};

}  // namespace Quask::Stat
