#include "json/json_scanner.h"

#include <cstddef>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "base/zeroed_bytes.h"
#include "json/headers_json.h"
#include "json/json_lines.h"
#include "json/json_writer.h"
#include "json/large_value_json.h"
#include "json/streams.h"
#include "report/scan_preparation.h"
#include "report/table_headers.h"
#include "support/value_type.h"
#include "table/quask_reader_generic.h"

namespace Quask::Json {
namespace {

// Both with one byte more: the NUL after a value.

std::unique_ptr<unsigned char[]> allocateBuffer(std::size_t size)
{
    return std::unique_ptr<unsigned char[]>(new (std::nothrow) unsigned char[size + 1]());
}

Dovan::ZeroedBytes allocateLargeBuffer(std::size_t size)
{
    return Dovan::allocateZeroed(size + 1);
}

void printCounters(QuaskReaderGeneric const& reader, std::ostream& out)
{
    PiecewiseText text(out);
    JsonWriter<PiecewiseText> writer(text);
    writer.beginObject();
    writer.member("lookasideHits", reader.lookasideHits());
    writer.member("chainRestarts", reader.chainRestarts());
    writer.endObject();
    text.Put('\n');
    text.writeOut();
}

}  // namespace

JsonScanner::~JsonScanner() = default;

int JsonScanner::doScanJson(bool printEmpty)
{
    std::string const name = tableNameText();
    QuaskReaderGeneric reader(name);
    if (!prepareScan(reader, name, std::cerr)) {
        return 1;
    }
    auto const& [typeName, valueSize] = reader.valueFormat();
    std::optional const type = Dovan::Platform::findValueType(typeName, valueSize);
    unsigned const fileSize = reader.mappedSlotBytes();
    if (valueSize > KeptChain::largestOther) {
        LargeValueJson lines(makeValueBuffer(*handler, valueSize, fileSize, allocateLargeBuffer),
                             valueSize, type, printEmpty, *out, reader);
        walkAll(reader, lines, *out);
    } else {
        JsonLines lines(makeValueBuffer(*handler, valueSize, fileSize, allocateBuffer), valueSize,
                        type, printEmpty, *out);
        walkAll(reader, lines, *out);
    }
    printCounters(reader, *out);
    closeOutput();
    return 0;
}

int JsonScanner::doGetHeadersJson()
{
    std::string const name = tableNameText();
    std::optional<TableHeaders> const headers = readTableHeaders(*handler, name);
    if (!headers) {
        return 1;
    }
    printHeaders(name, *headers, *out);
    closeOutput();
    return 0;
}

}  // namespace Quask::Json
