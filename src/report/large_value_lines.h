#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <vector>

#include "base/zeroed_bytes.h"
#include "support/value_printer.h"
#include "table/quask_reader_generic.h"
#include "table/scan_handler.h"
#include "table/slot_ref.h"

namespace Quask {

// Prints the same lines as QuaskTextify does, for values so large that their text, up to six times
// their size, is not to be in memory as a whole. It keeps the values of a chain as the walk has
// copied them; when the chain has ended, their text is made and written piece by piece. So a chain
// that had to be walked again never shows what was read of it before.
//
// Each element of the longest chain has its buffer, which is kept for the next chain. Beside them
// no more of the slot file is in memory than one element takes. One thread.
class LargeValueLines final : public ScanHandler
{
public:
    // Values of more bytes than this are large.
    static constexpr unsigned largestOther = 64 * 1024;

    // `valueBuffer` has `valueSize` bytes and is taken over. `printer` is the one for this size,
    // `reader` what the walk reads; they and `output` must outlive the object.
    LargeValueLines(Dovan::ZeroedBytes valueBuffer, unsigned valueSize,
                    Dovan::Platform::ValuePrinter const& printer, bool showEmpty,
                    std::ostream& output, QuaskReaderGeneric const& reader);

    // Writes the line, if there is one. Always true.
    bool done(unsigned bucket, SlotRef const& ref) override;

    // Keeps the element. Always true. Throws std::bad_alloc.
    bool handleSlot(unsigned bucket, SlotRef const& ref, unsigned char* valueBytes, unsigned length,
                    bool lookaside, unsigned sequence) override;

    // Forgets the elements. Always true.
    bool restart(unsigned bucket) override;

private:
    struct Element
    {
        Dovan::ZeroedBytes bytes;
        std::uint32_t index = SlotRef::null;  // of its slot
        bool lookaside = false;
    };

    // The elements of the chain are the first `count`; `data` is the buffer of the one after them.
    void setCount(std::size_t count);

    void writeElement(Element const& element);

    Dovan::Platform::ValuePrinter const& printer_;
    bool const printEmpty_;
    std::ostream& out_;
    QuaskReaderGeneric const& reader_;
    std::vector<Element> elements_;
    std::size_t count_ = 0;
};

}  // namespace Quask
