#include "report/quask_textify.h"

#include "report/batch_heads.h"

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

// Without a branch on where chains begin and end, for the reason that ChainBatch has for it: the
// head and the tail of a line are always written, and counted where they belong.
void QuaskTextify::addLines(ChainBatch const& batch)
{
    // Copies: each character that is written could change the object, for all that a compiler
    // knows.
    unsigned const length = size;
    bool const usesPrinter = usesPrinter_;
    bool const showsEmpty = printEmpty;
    std::size_t const valueRoom = Dovan::Platform::ValuePrinter::textRoom(length);
    std::size_t const elementRoom = ChainText::pieceRoom + valueRoom;
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
        out = ChainText::writeLink(out, element.ref.index);
        out = usesPrinter ? valuePrinter->writeText(out, valueRoom, element.value)
                          : Dovan::writeDumpHex(out, element.value, length);
        out += (writeTail(out) - out) * element.isLast;
    });
    if (showsEmpty) {
        addEmptyLines(batch.firstBucket() + batch.bucketCount());
    }
    chain.advanceTo(out);
}

}  // namespace Quask
