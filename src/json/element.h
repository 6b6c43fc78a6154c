#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "json/json_writer.h"
#include "support/value_type.h"

// The line of a bucket: {"bucket":4,"elements":[{"slot":20,...},...]}.
namespace Quask::Json {

template <typename Stream>
void beginBucket(JsonWriter<Stream>& writer, unsigned bucket)
{
    writer.beginObject();
    writer.member("bucket", bucket);
    writer.name("elements");
    writer.beginArray();
}

template <typename Stream>
void endBucket(JsonWriter<Stream>& writer)
{
    writer.endArray();
    writer.endObject();
}

// One element, in `slot`: its value, if its type is known, and the value's bytes, after which there
// is a NUL. `lookaside` says that the value was taken from the lookaside slot.
template <typename Stream>
void writeElement(JsonWriter<Stream>& writer, std::uint32_t slot,
                  std::optional<Dovan::Platform::ValueType> const& valueType,
                  unsigned char const* bytes, std::size_t size, bool lookaside)
{
    writer.beginObject();
    writer.member("slot", slot);
    if (valueType) {
        writer.name("value");
        writer.value(*valueType, bytes);
    }
    writer.name("hex");
    writer.hex(bytes, size);
    writer.member("lookaside", lookaside);
    writer.endObject();
}

}  // namespace Quask::Json
