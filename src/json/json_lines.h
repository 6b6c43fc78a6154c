#pragma once

#include <memory>
#include <optional>
#include <ostream>

#include "json/element.h"
#include "json/json_writer.h"
#include "json/streams.h"
#include "report/line_output.h"
#include "support/value_type.h"
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

private:
    std::unique_ptr<unsigned char[]> const buffer_;
    std::optional<Dovan::Platform::ValueType> const valueType_;
    bool const printEmpty_;
    KeptText line_;  // so far; empty until the chain's first element
    LineOutput lines_;
    JsonWriter<KeptText> writer_;
};

// Made part of the walk's loop, as those of QuaskTextify are.

[[gnu::always_inline]] inline bool JsonLines::handleSlot(unsigned bucket, SlotRef const& ref,
                                                         unsigned char* valueBytes, unsigned length,
                                                         bool lookaside, unsigned /*sequence*/)
{
    bool const isFirst = line_.empty();
    if (isFirst) {
        beginBucket(writer_, bucket);
    }
    writeElement(writer_, isFirst, ref.index, valueType_, valueBytes, length, lookaside);
    return true;
}

[[gnu::always_inline]] inline bool JsonLines::done(unsigned bucket, SlotRef const& /*ref*/)
{
    if (line_.empty()) {
        if (!printEmpty_) {
            return true;
        }
        beginBucket(writer_, bucket);
    }
    endBucket(writer_);
    lines_.write(line_.view());
    line_.clear();
    return true;
}

}  // namespace Quask::Json
