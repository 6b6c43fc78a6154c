#include "report/quask_textify.h"

#include <concepts>
#include <type_traits>

#include "report/batch_heads.h"
#include "support/element_text.h"
#include "support/value_type.h"

namespace Quask {
namespace {

char* writeTail(char* out)
{
    *out++ = ' ';
    return ChainText::writeEnd(out);
}

}  // namespace

QuaskTextify::QuaskTextify(std::unique_ptr<unsigned char[]> valueBuffer, unsigned valueSize,
                           Style chosenStyle, Dovan::Platform::ValuePrinter const* printer,
                           char const* valueType, bool showEmpty)
    : style(chosenStyle),
      valuePrinter(printer),
      typeName(valueType),
      printEmpty(showEmpty),
      usesPrinter_(chosenStyle == Vosk || chosenStyle == Pretty),
      elementRoom_(ChainText::pieceRoom + Dovan::dumpHexLength(valueSize) + Dovan::dumpHexSlack)
{
    data = valueBuffer.release();
    size = valueSize;
}

QuaskTextify::~QuaskTextify()
{
    delete[] data;
}

bool QuaskTextify::restart(unsigned /*bucket*/)
{
    chain.clear();
    return true;
}

// Integers of each type have a loop of their own: a call of the printer takes as long as writing
// the text's digits.
void QuaskTextify::addLines(ChainBatch const& batch)
{
    using Dovan::Platform::ElementText::writeElement;
    std::size_t const valueRoom = Dovan::Platform::ValuePrinter::textRoom(size);
    auto const print = [printer = valuePrinter, valueRoom](char* out, unsigned char const* bytes) {
        return printer->writeText(out, valueRoom, bytes);
    };
    if (!usesPrinter_) {
        writeLines(batch, [length = size](char* out, unsigned char const* bytes) {
            return Dovan::writeDumpHex(out, bytes, length);
        });
    } else if (auto const element = valuePrinter->element()) {
        visitElementType(*element, [&]<typename T>(std::type_identity<T> /*element*/) {
            if constexpr (std::integral<T> && sizeof(T) > 1) {
                writeLines(batch, writeElement<T>);
            } else {
                writeLines(batch, print);
            }
        });
    } else {
        writeLines(batch, print);
    }
}

// Without a branch on where chains begin and end, for the reason that ChainBatch has for it: the
// head and the tail of a line are always written, and counted where they belong.
template <typename WriteValue>
void QuaskTextify::writeLines(ChainBatch const& batch, WriteValue writeValue)
{
    // Copies: each character that is written could change the object, for all that a compiler
    // knows.
    bool const showsEmpty = printEmpty;
    std::size_t const elementRoom =
        ChainText::pieceRoom + Dovan::Platform::ValuePrinter::textRoom(size);
    BatchHeads const heads(batch.firstBucket());
    char* out = chain.reserve(0);
    unsigned nextBucket = batch.firstBucket();
    auto const addEmptyLines = [&](unsigned end) {
        for (; nextBucket < end; ++nextBucket) {
            out = chain.reserveFrom(out, ChainText::pieceRoom);
            out = writeTail(heads.write(out, nextBucket));
        }
    };
    batch.forEach([&](BatchElement const& element) {
        if (showsEmpty) {
            addEmptyLines(element.bucket);
            nextBucket = element.bucket + 1;
        }
        out = chain.reserveFrom(out, elementRoom);
        out += (heads.write(out, element.bucket) - out) * element.isFirst;
        *out++ = ' ';
        out = writeValue(ChainText::writeLink(out, element.ref.index), element.value);
        out += (writeTail(out) - out) * element.isLast;
    });
    if (showsEmpty) {
        addEmptyLines(batch.firstBucket() + batch.bucketCount());
    }
    chain.advanceTo(out);
}

}  // namespace Quask
