#pragma once

#include <ostream>
#include <span>

#include "base/zeroed_bytes.h"
#include "report/kept_chain.h"
#include "support/value_printer.h"
#include "table/quask_reader_generic.h"

namespace Quask {

// Prints the same lines as QuaskTextify does, for values so large that their text, up to six times
// their size, is not to be in memory as a whole: it is made and written piece by piece when the
// chain has ended. One thread.
class LargeValueLines final : public KeptChain
{
public:
    // `valueBuffer` has `valueSize` bytes and is taken over. `printer` is the one for this size,
    // `reader` what the walk reads; they and `output` must outlive the object.
    LargeValueLines(Dovan::ZeroedBytes valueBuffer, unsigned valueSize,
                    Dovan::Platform::ValuePrinter const& printer, bool showEmpty,
                    std::ostream& output, QuaskReaderGeneric const& reader);

private:
    void write(unsigned bucket, std::span<Element const> elements) override;
    void writeElement(Element const& element);

    Dovan::Platform::ValuePrinter const& printer_;
    std::ostream& out_;
};

}  // namespace Quask
