#include "report/quask_textify.h"

#include <charconv>
#include <cstring>

#include "base/hex.h"

namespace Quask {
namespace {

// Bytes that any of the pieces but a value may take, decimal prefixes included.
constexpr std::size_t pieceRoom = 64;

char* write(char* out, std::string_view text)
{
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

// "42:", in decimal.
char* writePrefix(char* out, unsigned number)
{
    return write(std::to_chars(out, out + 10, number).ptr, ":");
}

char* writeHead(char* out, unsigned bucket)
{
    return write(Dovan::writeHex(write(out, "bucket["), bucket), "]");
}

}  // namespace

QuaskTextify::QuaskTextify(std::unique_ptr<unsigned char[]> valueBuffer, unsigned valueSize,
                           Style chosenStyle, Dovan::Platform::ValuePrinter const* printer,
                           char const* valueType, bool showEmpty)
    : style(chosenStyle), valuePrinter(printer), typeName(valueType), printEmpty(showEmpty)
{
    data = valueBuffer.release();
    size = valueSize;
}

QuaskTextify::~QuaskTextify()
{
    delete[] data;
}

bool QuaskTextify::handleSlot(unsigned bucket, SlotRef const& ref, unsigned char* valueBytes,
                              unsigned length, bool lookaside, unsigned sequence)
{
    bool const printed = style == Vosk || style == Pretty;
    std::size_t const valueRoom = printed ? 0 : Dovan::dumpHexLength(length) + Dovan::dumpHexSlack;
    char* out = chain.reserve(2 * pieceRoom + valueRoom);
    if (chain.empty()) {
        out = writeHead(out, bucket);
    }
    *out++ = ' ';
    if (verbose) {
        out = writePrefix(out, ref.version);
    }
    out = write(Dovan::writeHex(out, ref.index), "-->");
    if (verbose) {
        out = writePrefix(out, sequence);
    }
    if (lookaside) {
        *out++ = '*';
    }
    if (printed) {
        chain.advanceTo(out);
        valuePrinter->append(chain, valueBytes);
    } else {
        chain.advanceTo(Dovan::writeDumpHex(out, valueBytes, length));
    }
    return true;
}

bool QuaskTextify::done(unsigned bucket, SlotRef const& ref)
{
    bool const isEmpty = chain.empty();
    if (isEmpty && !printEmpty) {
        return true;
    }
    char* out = chain.reserve(2 * pieceRoom);
    if (isEmpty) {
        out = writeHead(out, bucket);
    }
    *out++ = ' ';
    if (verbose) {
        out = writePrefix(out, ref.version);
    }
    chain.advanceTo(write(Dovan::writeHex(out, ref.index), " --> none\n"));
    bool const result = handleLineString(bucket, chain.view());
    chain.clear();
    return result;
}

bool QuaskTextify::restart(unsigned /*bucket*/)
{
    chain.clear();
    return true;
}

}  // namespace Quask
