#include "table/slot_reader_generic_table.h"

#include <algorithm>
#include <sstream>

#include "base/exception.h"
#include "support/mem_local.h"

namespace Quask {
namespace {

// Bytes of a file that holds `count` slots, in 32 bits as every size taken from a header.
unsigned sizeFor(unsigned slotSize, unsigned count)
{
    return slotSize * (1 + count) + SlotTable<EmptyValue>::fixedSize;
}

}  // namespace

SlotReaderGenericTable::SlotReaderGenericTable(Dovan::Platform::DebugHandler& sharedHandler,
                                               RootPath const& rootPath,
                                               ReaderStatistics& readerStatistics)
    : SlotTable(sharedHandler, rootPath), stats(&readerStatistics)
{}

SlotReaderGenericTable::~SlotReaderGenericTable() = default;

bool SlotReaderGenericTable::attach()
{
    unsigned const size = mem.memSize();
    if (size == 0) {
        return false;
    }
    header = static_cast<Header const*>(mem.attach(size, Mem::Mode::read));
    if (header == nullptr) {
        return false;
    }
    Header const copy(*header);
    adopt(copy);
    // The table may have grown between the look at the file's size and the copy. Nothing would
    // notice later that the mapping does not reach the slots that the copy counts: their version is
    // known.
    unsigned const needed = sizeFor(copy.slotSize, copy.mappedSlots.value);
    if (needed > size && needed <= mem.memSize()) {
        auto const* const larger = static_cast<Header const*>(mem.resize(needed));
        if (larger == nullptr) {
            return false;
        }
        header = larger;
        adopt(copy);
    }
    return true;
}

void SlotReaderGenericTable::adopt(Header const& copy)
{
    mappedVersion = copy.mappedSlots.version;
    capacity_ = copy.mappedSlots.value;
    maxIndex = capacity_ == 0 ? 0 : capacity_ - 1;
    slotSize_ = copy.slotSize;
    slotsOffset_ = std::size_t{fixedSize} + copy.slotSize;
    readableSize_ = mem.readableSize();
}

SlotLayout SlotReaderGenericTable::layout(unsigned valueBytes) const
{
    SlotLayout layout{base() + slotsOffset_, slotSize_, 0};
    std::size_t const firstEnd = slotsOffset_ + valueOffset + valueBytes;
    bool const aligned = slotsOffset_ % 8 == 0 && slotSize_ % 8 == 0;
    if (aligned && firstEnd <= readableSize_ && slotSize_ != 0) {
        std::size_t const mapped = (readableSize_ - firstEnd) / slotSize_ + 1;
        layout.reachable =
            static_cast<std::uint32_t>(std::min<std::size_t>(mapped, std::size_t{maxIndex} + 1));
    }
    return layout;
}

std::uint64_t SlotReaderGenericTable::slotCount() const
{
    // Slots of no bytes are all at the same place.
    std::size_t const inside = slotSize_ == 0 || slotsOffset_ > readableSize_
                                   ? 0
                                   : (readableSize_ - slotsOffset_) / slotSize_;
    return std::min(std::uint64_t{maxIndex}, std::uint64_t{inside}) + 1;
}

void SlotReaderGenericTable::copyLookasideValue(unsigned char* zeros, std::size_t size) const
{
    // Pages that are copied are let go by so many bytes, so that a large value is not in memory
    // twice.
    constexpr std::size_t pieceSize = std::size_t{1} << 20;
    std::size_t const begin = fixedSize + valueOffset;
    std::size_t const end = begin + size;
    for (std::size_t offset = begin; offset < end;) {
        Mem::ByteRange const data = mem.nextData({offset, end});
        std::size_t const pieceEnd = std::min(data.end, data.begin + pieceSize);
        Mem::Atomics::copy(zeros + (data.begin - begin), base() + data.begin,
                           pieceEnd - data.begin);
        mem.letGo({offset, pieceEnd});
        offset = pieceEnd;
    }
}

bool SlotReaderGenericTable::validate(std::string& error, ValueFormat& format) const
{
    Header const copy(*header);
    format = {copy.textOf(copy.valueType), copy.valueSize};
    return copy.validate(*handler, mem.memSize(), 0, error);
}

bool SlotReaderGenericTable::remap()
{
    Header const copy(*header);
    unsigned const newCount = copy.mappedSlots.value;
    unsigned const fileSize = mem.memSize();
    unsigned const slotSize = Mem::Atomics::load32(&header->slotSize, std::memory_order_relaxed);
    unsigned const needed = sizeFor(slotSize, newCount);
    if (needed > fileSize) {
        std::ostringstream message;
        message << "SlotReaderGeneric::doResize() requesting to map " << mem.getFilename() << " "
                << newCount << " slots. Requested file resize to " << needed
                << " but real file size is " << fileSize;
        Dovan::logAndThrow<CorruptionDetectedException>(*handler, message.str());
    }
    Header const* const former = header;
    header = static_cast<Header const*>(mem.resize(needed));
    if (header == nullptr) {
        std::ostringstream message;
        message << "SlotReaderGeneric::doResize() failed to resize shared "
                << "memory to size " << needed << " - the system may be out of memory.";
        Dovan::logAndThrow<Dovan::MemoryResourceException>(*handler, message.str());
    }
    stats->movedRemaps += header != former ? 1 : 0;
    stats->remaps += 1;
    adopt(copy);
    return true;
}

}  // namespace Quask
