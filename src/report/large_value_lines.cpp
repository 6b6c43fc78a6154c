#include "report/large_value_lines.h"

#include <utility>

#include "report/chain_text.h"

namespace Quask {
namespace {

// Writes to `out` what `writePiece`, given the address to write to, says is the piece.
template <typename WritePiece>
void print(std::ostream& out, WritePiece writePiece)
{
    char piece[ChainText::pieceRoom];
    out.write(piece, writePiece(piece) - piece);
}

}  // namespace

LargeValueLines::LargeValueLines(Dovan::ZeroedBytes valueBuffer, unsigned valueSize,
                                 Dovan::Platform::ValuePrinter const& printer, bool showEmpty,
                                 std::ostream& output, QuaskReaderGeneric const& reader)
    : KeptChain(std::move(valueBuffer), valueSize, valueSize, showEmpty, reader),
      printer_(printer),
      out_(output)
{}

void LargeValueLines::write(unsigned bucket, std::span<Element const> elements)
{
    print(out_, [&](char* piece) { return ChainText::writeHead(piece, bucket); });
    for (Element const& element : elements) {
        writeElement(element);
    }
    print(out_, [](char* piece) { return ChainText::writeEnd(ChainText::write(piece, " ")); });
}

void LargeValueLines::writeElement(Element const& element)
{
    print(out_, [&](char* piece) {
        char* const end = ChainText::writeLink(ChainText::write(piece, " "), element.index);
        return ChainText::write(end, element.lookaside ? "*" : "");
    });
    printer_.writeTo(out_, element.bytes.get());
}

}  // namespace Quask
