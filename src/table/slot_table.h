#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/debug_handler.h"
#include "base/debuggable.h"
#include "mem/quask_mem.h"
#include "mem/ver_u32.h"
#include "support/root_path.h"
#include "table/slot_ref.h"

namespace Quask {

// The value type of a table whose slots' size is known only from its file.
struct EmptyValue
{};

// One slot as it is in the file; the value's bytes begin at `value`. Changed at any time by the
// table's writer, who raises `sequence` around every change of the value.
template <typename Value>
struct Slot
{
    // The bit of `sequence` that says: the value is being rewritten, what it was before is in the
    // lookaside slot.
    static constexpr std::uint32_t LOOKASIDE = 2;

    SlotRef next = {0, SlotRef::null};
    std::uint32_t writerWord = 0xffffffff;  // not read by this system
    std::uint32_t sequence = 0;
    alignas(8) Value value;
};

static_assert(sizeof(Slot<EmptyValue>) == 24);
static_assert(offsetof(Slot<EmptyValue>, sequence) == 12);
static_assert(offsetof(Slot<EmptyValue>, value) == 16);

// The slot file of a table: a header that ends in the lookaside slot, then the slots.
template <typename Value>
class SlotTable;

template <>
class SlotTable<EmptyValue> : public Dovan::Debuggable
{
public:
    // As it is in the file, little-endian.
    struct Header
    {
        std::uint64_t magic;
        std::uint32_t version;
        std::uint32_t orvik;             // creator stamp, see Util::decodeOrvik
        std::array<char, 64> valueType;  // see textOf()
        std::array<char, 64> classType;
        std::uint32_t valueSize;  // bytes of a value
        std::uint32_t slotSize;   // bytes from one slot to the next
        std::uint32_t maxSlots;
        std::uint32_t hash;  // see checksum()
        std::uint32_t occupiedSlots;
        std::uint32_t freeHead;            // index of the first free slot; 0xffffffff is none
        Mem::VerU32 mappedSlots = {0, 0};  // value: number of slots in the file
        Slot<EmptyValue> lookaside;        // its value goes on after the header, valueSize bytes

        // A consistent copy of a mapped header, which the writer may change during the copy:
        // repeated until mappedSlots.version was the same before and after. There is no other way
        // to copy one.
        Header(Header const& live);

        // What a name field of this header says: the text up to its first NUL. Where the field has
        // none, the text goes on after it, at most to the header's end.
        std::string textOf(std::array<char, 64> const& field) const;

        // The checksum that the descriptive fields should have.
        std::uint32_t checksum() const;

        // As BucketTable::Header::validate(), for the slot file. Called on a copy.
        bool validate(Dovan::Platform::DebugHandler& handler, unsigned fileSize,
                      unsigned expectedOrvik, std::string& error) const;
    };

    // "QUASKSLT" in file order.
    static constexpr std::uint64_t magic = 0x544c534b53415551;
    static constexpr std::uint32_t version = 4;

    // Bytes before the lookaside slot.
    static constexpr unsigned fixedSize = 176;

    // `sharedHandler` must outlive the table. Nothing is mapped yet.
    SlotTable(Dovan::Platform::DebugHandler& sharedHandler, RootPath const& rootPath);
    ~SlotTable() override;

    // Unmaps the file; 0, or -1 when the system refuses.
    virtual int detach();

    // The number of slots that the mapping holds.
    virtual unsigned capacity() const = 0;

protected:
    QuaskMem mem;
    Header const* header = nullptr;  // in the mapping; null while detached
};

static_assert(sizeof(SlotTable<EmptyValue>::Header) == 200);
static_assert(offsetof(SlotTable<EmptyValue>::Header, valueType) == 16);
static_assert(offsetof(SlotTable<EmptyValue>::Header, classType) == 80);
static_assert(offsetof(SlotTable<EmptyValue>::Header, valueSize) == 144);
static_assert(offsetof(SlotTable<EmptyValue>::Header, hash) == 156);
static_assert(offsetof(SlotTable<EmptyValue>::Header, mappedSlots) == 168);
static_assert(offsetof(SlotTable<EmptyValue>::Header, lookaside) ==
              SlotTable<EmptyValue>::fixedSize);

}  // namespace Quask
