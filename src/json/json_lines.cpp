#include "json/json_lines.h"

#include <cstring>
#include <type_traits>
#include <utility>

namespace Quask::Json {

using Dovan::Platform::ElementType;

JsonLines::JsonLines(std::unique_ptr<unsigned char[]> buffer, unsigned valueSize,
                     std::optional<Dovan::Platform::ValueType> const& valueType, bool showEmpty,
                     std::ostream& output)
    : buffer_(std::move(buffer)),
      valueType_(valueType),
      printEmpty_(showEmpty),
      elementRoom_(pieceRoom + valueRoom(valueSize) + 2 * std::size_t{valueSize} +
                   Dovan::hexDigitsSlack),
      lines_(output, line_),
      writer_(value_)
{
    data = buffer_.get();
    size = valueSize;
}

bool JsonLines::restart(unsigned /*bucket*/)
{
    line_.clear();
    return true;
}

// Numbers of each type have a loop of their own: to choose how to write each one takes a third of
// the instructions that write it.
bool JsonLines::handleBatch(ChainBatch const& batch)
{
    if (!valueType_) {
        writeLines(batch, [](char* out, unsigned char const* /*bytes*/) { return out; });
    } else if (valueType_->isArray || valueType_->element == ElementType::character) {
        writeLines(batch, [this](char* out, unsigned char const* bytes) {
            std::memcpy(data, bytes, size);  // with the NUL that is to follow characters
            return writeValue(out, data);
        });
    } else {
        visitElementType(valueType_->element, [&]<typename T>(std::type_identity<T> /*element*/) {
            if constexpr (!std::is_same_v<T, char>) {
                writeLines(batch, [](char* out, unsigned char const* bytes) {
                    return JsonWriter<RoomyText>::write<T>(beginValue(out), bytes);
                });
            }
        });
    }
    return true;
}

// Without a branch on where chains begin and end, for the reason that ChainBatch has for it: the
// ends of a line are always written, and counted where they belong.
template <typename WriteValue>
void JsonLines::writeLines(ChainBatch const& batch, WriteValue const& writeMember)
{
    // Copies: each character that is written could change the object, for all that a compiler
    // knows.
    unsigned const length = size;
    bool const showsEmpty = printEmpty_;
    std::size_t const elementRoom = elementRoom_;
    LineBeginnings const beginnings(batch.firstBucket());
    char* out = line_.reserve(0);
    unsigned nextBucket = batch.firstBucket();
    auto const addEmptyLines = [&](unsigned end) {
        for (; nextBucket < end; ++nextBucket) {
            out = line_.reserveFrom(out, pieceRoom);
            out = endLine(beginnings.write(out, nextBucket));
        }
    };
    batch.forEach([&](BatchElement const& element) {
        if (showsEmpty) {
            addEmptyLines(element.bucket);
            nextBucket = element.bucket + 1;
        }
        out = line_.reserveFrom(out, elementRoom);
        out += (beginnings.write(out, element.bucket) - out) * element.isFirst;
        *out = ',';
        out += 1 - element.isFirst;
        out = writeMember(beginElement(out, element.ref.index), element.value);
        out = endElement(Dovan::writeHexDigits(beginHex(out), element.value, length), false);
        out += (endLine(out) - out) * element.isLast;
    });
    if (showsEmpty) {
        addEmptyLines(batch.firstBucket() + batch.bucketCount());
    }
    line_.advanceTo(out);
    lines_.write(line_.view());
    line_.clear();
}

}  // namespace Quask::Json
