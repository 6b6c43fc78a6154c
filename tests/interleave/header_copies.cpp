#include "interleave/header_copies.h"

#include "base/hex.h"

namespace QuaskTesting {

std::string violationInCopy(ScheduledMemory const& memory, TableFile file, void const* copy,
                            std::size_t size)
{
    std::string const bytes(static_cast<char const*>(copy), size);
    WriterHistory const& history = memory.history();
    Moments moments = 0;
    for (Moment moment = 0; moment <= history.last(); ++moment) {
        moments |= history.contents(file, moment).substr(0, size) == bytes ? only(moment) : 0;
    }
    std::string violation;
    memory.forTightestSpans(0, memory.loads() - 1, [&](Moment first, Moment last) {
        if ((moments & between(first, last)) == 0) {
            violation = "the copy taken from moment " + std::to_string(first) + " to " +
                        std::to_string(last) + " was the header " +
                        (moments == 0 ? "never: " : "only before or after: ") +
                        Dovan::dumpHex(bytes.data(), static_cast<unsigned>(size));
        }
    });
    return violation;
}

}  // namespace QuaskTesting
