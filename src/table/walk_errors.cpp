#include "table/walk_errors.h"

#include <sstream>
#include <string>

#include "base/exception.h"

namespace Quask {
namespace {

// The error that arises where the slot is looked up.
std::string outsideSlots(SlotReaderGenericTable const& slots, std::uint32_t index)
{
    std::ostringstream message;
    if (index > slots.maximumIndex()) {
        message << "SlotReaderGenericTable::getSlot out-of-range "
                << "index: " << index << " max:" << slots.maximumIndex();
    } else {
        message << "SlotReaderGenericTable::getSlot outside the mapped file "
                << "index: " << index << " offset:" << slots.offsetOf(index)
                << " mapped:" << slots.readableSize();
    }
    return message.str();
}

}  // namespace

void throwOutsideSlots(Dovan::Platform::DebugHandler& handler, SlotReaderGenericTable const& slots,
                       std::uint32_t index)
{
    // The text is wrapped twice in the form of msg(): the first error is held back until it is
    // known that the file has not grown, and each holding and raising makes a new exception of the
    // last.
    CorruptionDetectedException const raised(outsideSlots(slots, index), true);
    Dovan::trace(handler, 0, raised.what());
    CorruptionDetectedException const pending(raised.msg(), true);
    Dovan::logAndThrow<CorruptionDetectedException>(handler, pending.msg());
}

void throwCycle(Dovan::Platform::DebugHandler& handler, unsigned bucket, std::uint32_t index)
{
    std::ostringstream message;
    message << "QuaskReaderGeneric::scan() chain of bucket:" << bucket
            << " comes back to slot:" << index;
    Dovan::logAndThrow<CorruptionDetectedException>(handler, message.str());
}

void throwOverlap(Dovan::Platform::DebugHandler& handler, unsigned bucket, std::size_t slotSize,
                  unsigned valueSize)
{
    std::ostringstream message;
    message << "QuaskReaderGeneric::scan() chain of bucket:" << bucket
            << " is longer than the file, slot size:" << slotSize << " value size:" << valueSize;
    Dovan::logAndThrow<CorruptionDetectedException>(handler, message.str());
}

void throwTooManyElements(Dovan::Platform::DebugHandler& handler, unsigned bucket,
                          std::uint64_t elements, std::uint64_t slots)
{
    std::ostringstream message;
    message << "QuaskReaderGeneric::scan() the chains up to bucket:" << bucket
            << " lead to elements:" << elements << " slots:" << slots;
    Dovan::logAndThrow<CorruptionDetectedException>(handler, message.str());
}

}  // namespace Quask
