#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/debug_handler.h"
#include "mem/atomics.h"
#include "mem/quask_mem.h"
#include "mem/ver_u32.h"
#include "support/root_path.h"
#include "table/reader_statistics.h"
#include "table/slot_table.h"

namespace Quask {

// What is in a table.
struct ValueFormat
{
    std::string typeName;
    unsigned size = 0;  // bytes of a value
};

// Where the slots are in a mapping, for as long as it is not mapped again.
struct SlotLayout
{
    unsigned char const* slot0;
    std::size_t slotSize;     // bytes
    std::uint32_t reachable;  // slots below this index lie inside the mapped pages, value and all,
                              // and are aligned to 8 bytes; 0 where the slots are not aligned

    unsigned char const* slot(std::uint32_t index) const { return slot0 + slotSize * index; }
};

// Reads the slot file of a table that other processes write and grow. Every word of the mapping may
// change at any time and is read through Mem::Atomics. One thread.
class SlotReaderGenericTable : public SlotTable<EmptyValue>
{
public:
    // `readerStatistics` counts the re-maps and must outlive the table, like `sharedHandler`.
    SlotReaderGenericTable(Dovan::Platform::DebugHandler& sharedHandler, RootPath const& rootPath,
                           ReaderStatistics& readerStatistics);
    ~SlotReaderGenericTable() override;

    // Maps the whole file and takes the layout from a copy of its header, whatever that says. False
    // when the file is missing, empty or cannot be mapped.
    bool attach();

    bool isAttached() const { return header != nullptr; }

    // Whether the mapped file is still the one that has the name; true while none is mapped.
    bool isCurrent() const { return mem.isCurrent(); }

    // Whether a page of the file could not be read and was treated as zeros.
    bool hasUnreadablePage() const { return mem.hasUnreadablePage(); }

    // Checks a fresh copy of the mapped header, from which `format` is taken. False with the reason
    // in `error` when the file cannot be walked. Precondition: attached.
    bool validate(std::string& error, ValueFormat& format) const;

    // Brings the mapping up to the number of slots that the writer has published. True when it was
    // mapped again: all pointers into it are then invalid. Throws CorruptionDetectedException when
    // the file is too short for that number, MemoryResourceException when it cannot be mapped.
    bool doResize() { return hasGrown() && remap(); }

    // Whether the writer has published another number of slots than the mapping was made for.
    bool hasGrown() const
    {
        // relaxed: pairs with nothing; the consistent copy of the growth step reads the header
        // again.
        return mappedVersion !=
               Mem::Atomics::load32(&Mem::Atomics::knownAligned(header)->mappedSlots.version,
                                    std::memory_order_relaxed);
    }

    unsigned capacity() const override { return capacity_; }

    // The highest slot index that may be read. Without any slot it is 0, not none: index 0 then
    // passes, and the bytes where slot 0 would be are read if they are mapped.
    unsigned maximumIndex() const { return maxIndex; }

    // Bytes of a value as the header says it now.
    unsigned liveValueSize() const
    {
        // relaxed: the writer does not change it; a stray value is cut to the reader's own buffer.
        return Mem::Atomics::load32(&Mem::Atomics::knownAligned(header)->valueSize,
                                    std::memory_order_relaxed);
    }

    // The first byte of the slot of this index, or null when its fixed words and `valueBytes` bytes
    // of value do not all lie inside the mapped pages. Valid until the next doResize(). Not a Slot:
    // a damaged header may put slots at addresses that are not aligned for one.
    unsigned char const* slotAt(unsigned index, unsigned valueBytes) const
    {
        std::size_t const offset = offsetOf(index);
        if (offset + valueOffset + valueBytes > readableSize_) [[unlikely]] {
            return nullptr;
        }
        return base() + offset;
    }

    // Where in the file that slot begins, in bytes; may be outside.
    std::size_t offsetOf(unsigned index) const
    {
        return slotsOffset_ + std::size_t{slotSize_} * index;
    }

    // The number of slots that an index can lead to: those that are counted and whose fixed words
    // begin inside the mapped pages, or one more.
    std::uint64_t slotCount() const;

    // Bytes from one slot to the next, as the header said when the file was mapped.
    unsigned slotSize() const { return slotSize_; }

    // The layout of the current mapping for values of `valueBytes` bytes.
    SlotLayout layout(unsigned valueBytes) const;

    // Bytes that can be read of the mapping: whole pages.
    std::size_t readableSize() const { return readableSize_; }

    // The value bytes of the lookaside slot. Every slot that slotAt() finds lies after it, so as
    // many bytes are inside the mapping here.
    unsigned char const* lookasideValue() const { return base() + fixedSize + valueOffset; }

    // Lets the mapped pages go from memory until they are read again.
    void letGo() const { mem.letGo({0, readableSize_}); }

    // Bytes of it that the mapping holds at most.
    std::size_t lookasideSize() const { return readableSize_ - fixedSize - valueOffset; }

    // Copies its first `size` bytes, which the mapping must hold, to `zeros`, which are all 0. The
    // file stays as it is on disk and in memory: no hole of it gets a page.
    void copyLookasideValue(unsigned char* zeros, std::size_t size) const;

    // Bytes of the file that are mapped; 0 while nothing is.
    unsigned mappedSize() const { return mem.mappedSize(); }

    // The file's size in bytes now.
    unsigned fileSize() const { return mem.memSize(); }

    // The mapped header. Precondition: attached.
    Header const& liveHeader() const { return *header; }

    // Where the words of a slot are, in bytes from its first.
    static constexpr std::size_t nextOffset = offsetof(Slot<EmptyValue>, next);
    static constexpr std::size_t sequenceOffset = offsetof(Slot<EmptyValue>, sequence);
    static constexpr std::size_t valueOffset = offsetof(Slot<EmptyValue>, value);

private:
    unsigned char const* base() const { return reinterpret_cast<unsigned char const*>(header); }

    // Takes the layout of the mapping from a copy of its header.
    void adopt(Header const& copy);

    bool remap();

    ReaderStatistics* stats;
    unsigned mappedVersion = 0;  // the mappedSlots.version that the mapping corresponds to
    unsigned capacity_ = 0;
    unsigned maxIndex = 0;
    unsigned slotSize_ = 0;
    std::size_t slotsOffset_ = 0;  // of slot 0, in bytes
    std::size_t readableSize_ = 0;
};

}  // namespace Quask
