#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <ostream>
#include <string>

#include "base/debug_handler.h"
#include "base/zeroed_bytes.h"
#include "table/direction.h"
#include "table/quask_reader_generic.h"

// The steps of a table scan that do not depend on what is printed of the elements.
namespace Quask {

// Attaches and checks the table of this name. False when it cannot be walked, with a line on
// standard error; where a check failed, with the reason on `reasons` before.
bool prepareScan(QuaskReaderGeneric& reader, std::string const& name, std::ostream& reasons);

// Throws the CorruptionDetectedException of a value for which there is no buffer.
[[noreturn]] void failForValueBuffer(Dovan::Platform::DebugHandler& handler, unsigned valueSize,
                                     unsigned fileSize);

// Zeroed memory for one value, from `allocate`, which gives null when there is none. A value can be
// no larger than the file that holds it: a header that says so, or memory that cannot be had, is
// corruption. Sizes are in bytes.
template <typename Buffer>
Buffer makeValueBuffer(Dovan::Platform::DebugHandler& handler, unsigned valueSize,
                       unsigned fileSize, Buffer (*allocate)(std::size_t size))
{
    Buffer buffer;
    if (valueSize <= fileSize) {
        buffer = allocate(valueSize);
    }
    if (buffer == nullptr) {
        failForValueBuffer(handler, valueSize, fileSize);
    }
    return buffer;
}

// Hands every slot of every chain to `handler`, a ScanHandler, which prints on `out`. Throws what
// the walk throws, with what was printed before on the output.
template <typename Handler>
void walkAll(QuaskReaderGeneric& reader, Handler& handler, std::ostream& out)
{
    try {
        reader.scan(handler, 0, 0xffffffff, Direction::upward, true);
    } catch (...) {
        // An exception that nothing catches ends the process without unwinding, and the lines of
        // the buckets before it would be lost.
        out.flush();
        throw;
    }
}

}  // namespace Quask
