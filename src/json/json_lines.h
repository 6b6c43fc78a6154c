#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>

#include "base/hex.h"
#include "base/text_buffer.h"
#include "json/element.h"
#include "json/json_writer.h"
#include "json/streams.h"
#include "report/line_output.h"
#include "support/value_type.h"
#include "table/chain_batch.h"
#include "table/scan_handler.h"
#include "table/slot_ref.h"

namespace Quask::Json {

// Turns the walk of each bucket chain into one line, and hands it on when the chain has ended: a
// chain that had to be walked again never shows what was read of it before. Nothing is allocated
// for a bucket or a slot once the buffer has grown to the longest line. One thread.
class JsonLines final : public ScanHandler
{
public:
    // `buffer` has one byte more than a value, which stays 0. `valueType` is the values' type, if
    // it is known. `output` must outlive the object.
    JsonLines(std::unique_ptr<unsigned char[]> buffer, unsigned valueSize,
              std::optional<Dovan::Platform::ValueType> const& valueType, bool showEmpty,
              std::ostream& output);

    // Writes the line, if there is one. Always true.
    bool done(unsigned bucket, SlotRef const& ref) override;

    // Adds an element to the line. Always true.
    bool handleSlot(unsigned bucket, SlotRef const& ref, unsigned char* valueBytes, unsigned length,
                    bool lookaside, unsigned sequence) override;

    // Throws the line away. Always true.
    bool restart(unsigned bucket) override;

    // Writes the lines of a batch. Always true.
    bool handleBatch(ChainBatch const& batch);

private:
    // Writes the member of a value to memory that has room for it; the address after it.
    char* writeValue(char* out, unsigned char const* bytes)
    {
        value_.advanceTo(beginValue(out));
        writer_.put(*valueType_, bytes);
        return value_.reserve(0);
    }

    // Writes the lines of a batch. `writeMember` writes the member of a value as writeValue() does.
    template <typename WriteValue>
    void writeLines(ChainBatch const& batch, WriteValue const& writeMember);

    std::unique_ptr<unsigned char[]> const buffer_;
    std::optional<Dovan::Platform::ValueType> const valueType_;
    bool const printEmpty_;
    std::size_t const elementRoom_;  // characters that an element takes, with both ends of the line
    Dovan::TextBuffer line_;         // so far; empty until the chain's first element
    LineOutput lines_;
    RoomyText value_;  // a part of the line
    JsonWriter<RoomyText> writer_;
};

// Made part of the walk's loop, as those of QuaskTextify are.

[[gnu::always_inline]] inline bool JsonLines::handleSlot(unsigned bucket, SlotRef const& ref,
                                                         unsigned char* valueBytes, unsigned length,
                                                         bool lookaside, unsigned /*sequence*/)
{
    char* out = line_.reserve(elementRoom_);
    if (line_.empty()) {
        out = beginLine(out, bucket);
    } else {
        *out++ = ',';
    }
    out = beginElement(out, ref.index);
    if (valueType_) {
        out = writeValue(out, valueBytes);
    }
    out = Dovan::writeHexDigits(beginHex(out), valueBytes, length);
    line_.advanceTo(endElement(out, lookaside));
    return true;
}

[[gnu::always_inline]] inline bool JsonLines::done(unsigned bucket, SlotRef const& /*ref*/)
{
    bool const isEmpty = line_.empty();
    if (isEmpty && !printEmpty_) {
        return true;
    }
    char* out = line_.reserve(pieceRoom);
    if (isEmpty) {
        out = beginLine(out, bucket);
    }
    line_.advanceTo(endLine(out));
    lines_.write(line_.view());
    line_.clear();
    return true;
}

}  // namespace Quask::Json
