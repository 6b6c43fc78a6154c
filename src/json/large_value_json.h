#pragma once

#include <optional>
#include <ostream>
#include <span>

#include "base/zeroed_bytes.h"
#include "json/streams.h"
#include "report/kept_chain.h"
#include "support/value_type.h"
#include "table/quask_reader_generic.h"

namespace Quask::Json {

// Prints the same lines as JsonLines does, for large values: the text is made and written piece by
// piece when the chain has ended. One thread.
class LargeValueJson final : public KeptChain
{
public:
    // `buffer` has one byte more than a value, which stays 0, and is taken over. `valueType` is the
    // values' type, if it is known. `reader` is what the walk reads; it and `output` must outlive
    // the object.
    LargeValueJson(Dovan::ZeroedBytes buffer, unsigned valueSize,
                   std::optional<Dovan::Platform::ValueType> const& valueType, bool showEmpty,
                   std::ostream& output, QuaskReaderGeneric const& reader);

private:
    void write(unsigned bucket, std::span<Element const> elements) override;

    std::optional<Dovan::Platform::ValueType> const valueType_;
    PiecewiseText text_;
};

}  // namespace Quask::Json
