#include "table/slot_table.h"

#include <atomic>
#include <ios>
#include <string_view>

#include "mem/atomics.h"
#include "support/util.h"
#include "table/header_check.h"

namespace Quask {

using Mem::Atomics::copy;
using Mem::Atomics::fenceAcquire;
using Mem::Atomics::load32;
using Mem::Atomics::load64;

SlotTable<EmptyValue>::Header::Header(Header const& live)
{
    std::uint32_t before = 0;
    std::uint32_t after = 0;
    do {
        // acquire: pairs with the writer's release store of mappedSlots, so that the copy is at
        // least as new as the version.
        before = Mem::verU32(load64(&live.mappedSlots, std::memory_order_acquire)).version;
        copy(static_cast<void*>(this), &live, sizeof *this);
        // The fence keeps the copy before the second look: words of a later state bring the version
        // that the writer had stored before them.
        fenceAcquire();
        after = load32(&live.mappedSlots.version, std::memory_order_relaxed);
    } while (after != before);
}

std::string SlotTable<EmptyValue>::Header::textOf(std::array<char, 64> const& field) const
{
    std::string_view const bytes(reinterpret_cast<char const*>(this), sizeof *this);
    auto const begin = static_cast<std::size_t>(field.data() - bytes.data());
    std::string_view const text = bytes.substr(begin);
    return std::string(text.substr(0, text.find('\0')));
}

std::uint32_t SlotTable<EmptyValue>::Header::checksum() const
{
    auto const hashOfWord = [](std::uint32_t const& word) {
        return Util::hash(reinterpret_cast<char const*>(&word), sizeof word);
    };
    return Util::hash(valueType.data(), 64) + Util::hash(classType.data(), 64) +
           hashOfWord(valueSize) + hashOfWord(slotSize) + hashOfWord(maxSlots);
}

bool SlotTable<EmptyValue>::Header::validate(Dovan::Platform::DebugHandler& handler,
                                             unsigned fileSize, unsigned expectedOrvik,
                                             std::string& error) const
{
    if (fileSize < sizeof(Header)) {
        return failCheck(handler, error,
                         "SlotTable::Header::validate() bad header file size: ", fileSize,
                         " wanted:", sizeof(Header));
    }
    if (magic != SlotTable::magic) {
        return failCheck(handler, error, "SlotTable::Header::validate() bad magic: ", std::hex,
                         magic);
    }
    if (version != SlotTable::version) {
        return failCheck(handler, error, "SlotTable::Header::validate() bad version: ", version);
    }
    if (expectedOrvik != 0 && orvik != expectedOrvik) {
        // Without "Header::", unlike its neighbours: the text is fixed.
        return failCheck(handler, error, "SlotTable::validate() bad orvik:", std::hex, orvik,
                         " wanted:", expectedOrvik);
    }
    std::uint32_t const computed = checksum();
    if (computed != hash) {
        return failCheck(handler, error, "SlotTable::Header::validate() checksum fail: ", std::hex,
                         computed, " != ", hash);
    }
    std::uint32_t const count = mappedSlots.value;
    if (occupiedSlots > count) {
        return failCheck(handler, error,
                         "SlotTable::Header::validate() bad occupiedSlots: ", occupiedSlots,
                         " num slots: ", count);
    }
    if (freeHead != 0xffffffff && freeHead >= count) {
        return failCheck(handler, error, "SlotTable::Header::validate() bad freeSlots: ", freeHead,
                         " slots: ", count);
    }
    // With the smallest slot there is, not with slotSize, and in 32 bits, both on purpose: what
    // this lets through is stopped where the slots are read.
    std::uint32_t const wanted = count * 24 + 200;
    if (fileSize < wanted) {
        return failCheck(handler, error, "SlotTable::Header::validate() bad shmem size:", fileSize,
                         " wanted:", wanted, " for ", count, " slots");
    }
    return true;
}

SlotTable<EmptyValue>::SlotTable(Dovan::Platform::DebugHandler& sharedHandler,
                                 RootPath const& rootPath)
    : Debuggable(sharedHandler), mem(sharedHandler, rootPath, "slots", false)
{}

SlotTable<EmptyValue>::~SlotTable() = default;

int SlotTable<EmptyValue>::detach()
{
    Dovan::trace(*handler, 5, "SlotTable::detach()");
    int const result = mem.detach();
    header = nullptr;
    return result;
}

}  // namespace Quask
