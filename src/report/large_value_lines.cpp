#include "report/large_value_lines.h"

#include <new>
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
    : printer_(printer), printEmpty_(showEmpty), out_(output), reader_(reader)
{
    size = valueSize;
    elements_.push_back({std::move(valueBuffer)});
    setCount(0);
}

bool LargeValueLines::handleSlot(unsigned /*bucket*/, SlotRef const& ref,
                                 unsigned char* /*valueBytes*/, unsigned /*length*/, bool lookaside,
                                 unsigned /*sequence*/)
{
    elements_[count_].index = ref.index;
    elements_[count_].lookaside = lookaside;
    setCount(count_ + 1);
    reader_.letSlotsGo();
    return true;
}

void LargeValueLines::setCount(std::size_t count)
{
    if (count == elements_.size()) {
        // It takes no memory until there is an element for it.
        Dovan::ZeroedBytes buffer = Dovan::allocateZeroed(size);
        if (buffer == nullptr) {
            throw std::bad_alloc();
        }
        elements_.push_back({std::move(buffer)});
    }
    count_ = count;
    data = elements_[count].bytes.get();
}

bool LargeValueLines::done(unsigned bucket, SlotRef const& /*ref*/)
{
    if (count_ != 0 || printEmpty_) {
        print(out_, [&](char* piece) { return ChainText::writeHead(piece, bucket); });
        for (std::size_t i = 0; i < count_; ++i) {
            writeElement(elements_[i]);
        }
        print(out_, [](char* piece) { return ChainText::writeEnd(ChainText::write(piece, " ")); });
    }
    setCount(0);
    return true;
}

void LargeValueLines::writeElement(Element const& element)
{
    print(out_, [&](char* piece) {
        char* const end = ChainText::writeLink(ChainText::write(piece, " "), element.index);
        return ChainText::write(end, element.lookaside ? "*" : "");
    });
    printer_.writeTo(out_, element.bytes.get());
}

bool LargeValueLines::restart(unsigned /*bucket*/)
{
    setCount(0);
    return true;
}

}  // namespace Quask
