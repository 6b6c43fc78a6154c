#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/decimal.h"
#include "base/hex.h"
#include "base/text_buffer.h"
#include "report/chain_text.h"
#include "support/value_printer.h"
#include "table/chain_batch.h"
#include "table/scan_handler.h"
#include "table/slot_ref.h"

namespace Quask {

// Turns the walk of each bucket chain into one line of text, and hands the line on when the chain
// has ended: a chain that had to be walked again never shows what was read of it before. Nothing is
// allocated for a bucket or a slot once the buffer has grown to the longest line.
class QuaskTextify : public ScanHandler
{
public:
    // How values are shown: as hexadecimal bytes, or as the value printer's text. Vosk and Pretty
    // are the same text; every other number is Plain.
    enum Style : int
    {
        Plain = 0,
        Vosk = 1,
        Pretty = 2
    };

    // `valueBuffer` has `valueSize` bytes and is taken over. `valueType` is the type's name in the
    // slot header; it and the printer, which is the one for this type and size, must outlive the
    // object.
    QuaskTextify(std::unique_ptr<unsigned char[]> valueBuffer, unsigned valueSize,
                 Style chosenStyle, Dovan::Platform::ValuePrinter const* printer,
                 char const* valueType, bool showEmpty);
    QuaskTextify(QuaskTextify const&) = delete;
    QuaskTextify& operator=(QuaskTextify const&) = delete;

    // Ends the line. What handleLineString() said; true when an empty bucket is not to be shown.
    bool done(unsigned bucket, SlotRef const& ref) final;

    // Adds an element to the line. Always true.
    bool handleSlot(unsigned bucket, SlotRef const& ref, unsigned char* valueBytes, unsigned length,
                    bool lookaside, unsigned sequence) final;

    // Throws the line away. Always true.
    bool restart(unsigned bucket) final;

    // Takes a finished line, newline included; the text is valid during the call. False ends the
    // walk.
    virtual bool handleLineString(unsigned bucket, std::string_view line) = 0;

protected:
    ~QuaskTextify();

    // Adds the lines of a batch to `chain`, which is empty: the same text that the calls give for
    // which the batch stands. Precondition: not verbose, as a batch does not have the links of
    // empty buckets.
    void addLines(ChainBatch const& batch);

    Style style;
    bool verbose = false;  // shows each link's version and each slot's state word, in decimal
    std::string name;      // always empty; nothing reads it
    Dovan::Platform::ValuePrinter const* valuePrinter;
    char const* typeName;     // in the slot header as mapped at first; nothing reads it
    Dovan::TextBuffer chain;  // the line so far; empty until the chain's first element
    bool printEmpty;

private:
    bool const usesPrinter_;
    std::size_t const elementRoom_;  // characters that an element takes, but for a printer's text

    // Adds the lines of a batch. `writeValue` writes a value's text to memory that has room for it,
    // and returns the address after it.
    template <typename WriteValue>
    void writeLines(ChainBatch const& batch, WriteValue writeValue);

    // "42:", in decimal.
    static char* writePrefix(char* out, unsigned number)
    {
        return ChainText::write(Dovan::writeDecimal(out, number), ":");
    }
};

// Made part of the walk's loop, which calls them once for every slot and every bucket: with that a
// scan executes 15 % fewer instructions.

[[gnu::always_inline]] inline bool QuaskTextify::handleSlot(unsigned bucket, SlotRef const& ref,
                                                            unsigned char* valueBytes,
                                                            unsigned length, bool lookaside,
                                                            unsigned sequence)
{
    char* out = chain.reserve(elementRoom_);
    if (chain.empty()) {
        out = ChainText::writeHead(out, bucket);
    }
    *out++ = ' ';
    if (verbose) {
        out = writePrefix(out, ref.version);
    }
    out = ChainText::writeLink(out, ref.index);
    if (verbose) {
        out = writePrefix(out, sequence);
    }
    if (lookaside) {
        *out++ = '*';
    }
    if (usesPrinter_) {
        chain.advanceTo(out);
        valuePrinter->append(chain, valueBytes);
    } else {
        chain.advanceTo(Dovan::writeDumpHex(out, valueBytes, length));
    }
    return true;
}

[[gnu::always_inline]] inline bool QuaskTextify::done(unsigned bucket, SlotRef const& ref)
{
    bool const isEmpty = chain.empty();
    if (isEmpty && !printEmpty) {
        return true;
    }
    char* out = chain.reserve(ChainText::pieceRoom);
    if (isEmpty) {
        out = ChainText::writeHead(out, bucket);
    }
    *out++ = ' ';
    if (verbose) {
        out = writePrefix(out, ref.version);
    }
    chain.advanceTo(ChainText::writeEnd(out));
    bool const result = handleLineString(bucket, chain.view());
    chain.clear();
    return result;
}

}  // namespace Quask
