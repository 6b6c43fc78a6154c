#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

#include "base/decimal.h"
#include "json/json_writer.h"
#include "support/value_type.h"

// The line of a bucket: {"bucket":4,"elements":[{"slot":20,...},...]}. It is put together by hand,
// but for the values: with a call of the writer for each member, a scan takes three times as long
// as that of quask.
namespace Quask::Json {

// Room for the pieces between two values.
inline constexpr std::size_t pieceRoom = 128;

inline char* write(char* out, std::string_view piece)
{
    std::memcpy(out, piece.data(), piece.size());
    return out + piece.size();
}

template <typename Stream>
void beginBucket(JsonWriter<Stream>& writer, unsigned bucket)
{
    char* out = writer.text().reserve(pieceRoom);
    out = Dovan::writeDecimal(write(out, "{\"bucket\":"), bucket);
    writer.text().advanceTo(write(out, ",\"elements\":["));
}

template <typename Stream>
void endBucket(JsonWriter<Stream>& writer)
{
    writer.text().advanceTo(write(writer.text().reserve(pieceRoom), "]}\n"));
}

// One element, in `slot`: its value, if its type is known, and the value's bytes, after which there
// is a NUL. `lookaside` says that the value was taken from the lookaside slot.
template <typename Stream>
void writeElement(JsonWriter<Stream>& writer, bool isFirst, std::uint32_t slot,
                  std::optional<Dovan::Platform::ValueType> const& valueType,
                  unsigned char const* bytes, std::size_t size, bool lookaside)
{
    Stream& text = writer.text();
    char* out = text.reserve(pieceRoom);
    if (!isFirst) {
        *out++ = ',';
    }
    out = Dovan::writeDecimal(write(out, "{\"slot\":"), slot);
    if (valueType) {
        text.advanceTo(write(out, ",\"value\":"));
        writer.put(*valueType, bytes);
        out = text.reserve(pieceRoom);
    }
    text.advanceTo(write(out, ",\"hex\":"));
    writer.putHex(bytes, size);
    out = write(text.reserve(pieceRoom), ",\"lookaside\":");
    text.advanceTo(lookaside ? write(out, "true}") : write(out, "false}"));
}

}  // namespace Quask::Json
