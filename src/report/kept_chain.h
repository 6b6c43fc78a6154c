#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/zeroed_bytes.h"
#include "table/quask_reader_generic.h"
#include "table/scan_handler.h"
#include "table/slot_ref.h"

namespace Quask {

// Keeps the elements of a chain, with their values as the walk has copied them, until the chain has
// ended: for values so large that their text is not to be in memory as a whole. A chain that had to
// be walked again never shows what was read of it before.
//
// Each element of the longest chain has its buffer, which is kept for the next chain. Beside them
// no more of the slot file is in memory than one element takes. One thread.
class KeptChain : public ScanHandler
{
public:
    // Values of more bytes than this are large.
    static constexpr unsigned largestOther = 64 * 1024;

    // Hands the chain on, if it is not empty or empty ones are to be shown. Always true.
    bool done(unsigned bucket, SlotRef const& ref) final;

    // Keeps the element. Always true. Throws std::bad_alloc.
    bool handleSlot(unsigned bucket, SlotRef const& ref, unsigned char* valueBytes, unsigned length,
                    bool lookaside, unsigned sequence) final;

    // Forgets the elements. Always true.
    bool restart(unsigned bucket) final;

protected:
    struct Element
    {
        Dovan::ZeroedBytes bytes;             // as many as the object was made for
        std::uint32_t index = SlotRef::null;  // of its slot
        bool lookaside = false;
    };

    // Values have `valueSize` bytes. Each gets a buffer of `bufferSize` bytes, at least as many;
    // those after the value stay 0. `valueBuffer` is the first and is taken over. `reader` is what
    // the walk reads; it must outlive the object.
    KeptChain(Dovan::ZeroedBytes valueBuffer, unsigned valueSize, std::size_t bufferSize,
              bool showEmpty, QuaskReaderGeneric const& reader);
    ~KeptChain() = default;

    // Writes the finished chain, whose elements are valid during the call.
    virtual void write(unsigned bucket, std::span<Element const> elements) = 0;

private:
    // The elements of the chain are the first `count`; `data` is the buffer of the one after them.
    void setCount(std::size_t count);

    std::size_t const bufferSize_;
    bool const printEmpty_;
    QuaskReaderGeneric const& reader_;
    std::vector<Element> elements_;
    std::size_t count_ = 0;
};

}  // namespace Quask
