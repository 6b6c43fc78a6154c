// The table scan, the one job that every scanner has.

#include <array>
#include <cstddef>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "base/zeroed_bytes.h"
#include "report/large_value_lines.h"
#include "report/line_output.h"
#include "report/quask_scanner_base.h"
#include "report/quask_textify.h"
#include "report/scan_preparation.h"
#include "support/value_printer.h"
#include "table/quask_reader_generic.h"
#include "table/slot_reader_generic_table.h"
#include "table/slot_table.h"

namespace Quask {

// Writes each line as it is. Final, so that the walk calls it directly.
class QuaskScannerBase::MyScanner final : public QuaskTextify
{
public:
    MyScanner(std::unique_ptr<unsigned char[]> valueBuffer, unsigned valueSize, Style chosenStyle,
              Dovan::Platform::ValuePrinter const* printer, char const* valueType, bool showEmpty,
              std::ostream& output)
        : QuaskTextify(std::move(valueBuffer), valueSize, chosenStyle, printer, valueType,
                       showEmpty),
          lines_(output, chain)
    {}

    bool handleLineString(unsigned /*bucket*/, std::string_view line) override
    {
        lines_.write(line);
        return true;
    }

    bool handleBatch(ChainBatch const& batch)
    {
        addLines(batch);
        lines_.write(chain.view());
        chain.clear();
        return true;
    }

private:
    LineOutput lines_;
};

namespace {

std::unique_ptr<unsigned char[]> allocateBuffer(std::size_t size)
{
    return std::unique_ptr<unsigned char[]>(new (std::nothrow) unsigned char[size]());
}

// What shows values of this type in this style; hexadecimal bytes are what a type without a name
// has.
Dovan::Platform::ValuePrinter const* printerFor(QuaskTextify::Style style,
                                                std::string const& typeName, unsigned valueSize)
{
    bool const byType = style == QuaskTextify::Vosk || style == QuaskTextify::Pretty;
    return Dovan::Platform::getValuePrinter(byType ? typeName : std::string(),
                                            static_cast<int>(valueSize));
}

}  // namespace

int QuaskScannerBase::doScan(QuaskTextify::Style style, bool printEmpty)
{
    std::string const name = tableNameText();
    QuaskReaderGeneric reader(name);
    // A failed check is reported on standard output even when the report goes to a file.
    if (!prepareScan(reader, name, std::cout)) {
        return 1;
    }
    auto const& [typeName, valueSize] = reader.valueFormat();
    unsigned const fileSize = reader.mappedSlotBytes();
    if (valueSize > LargeValueLines::largestOther) {
        LargeValueLines lines(makeValueBuffer(*handler, valueSize, fileSize, Dovan::allocateZeroed),
                              valueSize, *printerFor(style, typeName, valueSize), printEmpty, *out,
                              reader);
        walkAll(reader, lines, *out);
    } else {
        MyScanner scanner(makeValueBuffer(*handler, valueSize, fileSize, allocateBuffer), valueSize,
                          style,
                          Dovan::Platform::getValuePrinter(typeName, static_cast<int>(valueSize)),
                          reader.liveSlotsHeader().valueType.data(), printEmpty, *out);
        walkAll(reader, scanner, *out);
    }
    *out << "Lookaside hits: " << reader.lookasideHits() << std::endl;
    *out << "Chain restarts: " << reader.chainRestarts() << std::endl;
    closeOutput();
    return 0;
}

}  // namespace Quask
