#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/decimal.h"
#include "table/chain_batch.h"

// The pieces of a bucket's line, {"bucket":4,"elements":[{"slot":20,...},...]}, but for the values.
// They are written by hand: with a call of the writer for each member, a scan takes three times as
// long as that of quask. Each function writes to memory that has room for all pieces of an element,
// and returns the address after what it has written.
namespace Quask::Json {

// Characters that these pieces of one element may overwrite, with both ends of the line.
inline constexpr std::size_t pieceRoom = 128;

inline char* write(char* out, std::string_view piece)
{
    std::memcpy(out, piece.data(), piece.size());
    return out + piece.size();
}

inline char* beginLine(char* out, unsigned bucket)
{
    return write(Dovan::writeDecimal(write(out, "{\"bucket\":"), bucket), ",\"elements\":[");
}

inline char* endLine(char* out)
{
    return write(out, "]}\n");
}

// The beginnings of a batch's lines. Those of ten neighbouring buckets differ in their last digit
// only: they are written once, and the digit each time. One thread.
class LineBeginnings
{
public:
    explicit LineBeginnings(unsigned firstBucket) : firstGroup_(firstBucket / groupSize)
    {
        for (unsigned i = 0; i < groups_.size(); ++i) {
            Group& group = groups_[i];
            group.size = beginLine(group.text, (firstGroup_ + i) * groupSize) - group.text;
        }
    }

    // Writes that of a bucket of the batch; the address after it. Overwrites 48 characters.
    char* write(char* out, unsigned bucket) const
    {
        unsigned const number = bucket / groupSize;
        Group const& group = groups_[number - firstGroup_];
        std::memcpy(out, group.text, sizeof group.text);
        char* const end = out + group.size;
        end[lastDigit] = static_cast<char>('0' + (bucket - number * groupSize));
        return end;
    }

private:
    static constexpr unsigned groupSize = 10;
    static constexpr std::ptrdiff_t lastDigit = -14;  // from the end

    struct Group
    {
        char text[48];  // `{"bucket":`, at most 10 digits, `,"elements":[`
        std::ptrdiff_t size;
    };

    unsigned firstGroup_;
    std::array<Group, ChainBatch::width / groupSize + 2> groups_;
};

// Up to the value's member, or that of its bytes where the type is not known.
inline char* beginElement(char* out, std::uint32_t slot)
{
    return Dovan::writeDecimal(write(out, "{\"slot\":"), slot);
}

inline char* beginValue(char* out)
{
    return write(out, ",\"value\":");
}

inline char* beginHex(char* out)
{
    return write(out, R"(,"hex":")");
}

// From the end of the hexadecimal digits on.
inline char* endElement(char* out, bool lookaside)
{
    return write(out, lookaside ? R"(","lookaside":true})" : R"(","lookaside":false})");
}

}  // namespace Quask::Json
