#include "table/header_text.h"

#include <cstdint>
#include <iomanip>
#include <sstream>

#include "mem/ver_u32.h"
#include "support/util.h"
#include "table/slot_ref.h"

namespace Quask::QuaskTest {
namespace {

void writeMagic(std::ostream& out, std::uint64_t magic)
{
    out << "\tMagic: 0x" << std::hex << magic << std::dec << " (\"" << Util::decodeMagic(magic)
        << "\")\n";
}

void writeOrvik(std::ostream& out, std::uint32_t orvik)
{
    unsigned short pid = 0;
    unsigned short instanceId = 0;
    Util::decodeOrvik(orvik, pid, instanceId);
    out << "\tOrvik: " << orvik << " (pid: " << pid << " instanceId: " << instanceId << ")\n";
}

struct Hex8
{
    std::uint32_t value;
};

std::ostream& operator<<(std::ostream& out, Hex8 const& hex)
{
    return out << std::hex << std::setw(8) << std::setfill('0') << hex.value << std::dec;
}

}  // namespace

void formatBucketsHeader(BucketTable::Header const& live, std::string& out)
{
    BucketTable::Header const header(live);
    std::ostringstream text;
    text << " (" << sizeof header << " bytes)\n";
    writeMagic(text, header.magic);
    text << "\tVersion: " << header.version << "\n";
    writeOrvik(text, header.orvik);
    text << "\tSize: " << header.numBuckets << " buckets\n"
         << "\tOwner pid: " << header.ownerPid << "\n";
    out = text.str();
}

void formatSlotsHeader(SlotTable<EmptyValue>::Header const& header, std::string& out)
{
    std::ostringstream text;
    text << " (" << SlotTable<EmptyValue>::fixedSize << " + " << header.slotSize << " bytes)\n";
    writeMagic(text, header.magic);
    text << "\tVersion: " << header.version << "\n";
    writeOrvik(text, header.orvik);
    text << "\tHash: 0x" << Hex8{header.hash} << "\n"
         << "\tOccupied slots: " << header.occupiedSlots
         << "\n"
         // Both decimal, unlike the text of a VerU32.
         << "\tMapped slots: " << header.mappedSlots.version << ":" << header.mappedSlots.value
         << "\n"
         << "\tMax slots: " << header.maxSlots << "\n"
         << "\tValue type: " << header.valueSize << " bytes \"" << header.textOf(header.valueType)
         << "\"\n"
         << "\tClass type: \"" << header.textOf(header.classType) << "\"\n"
         << "\tSlot size: " << header.slotSize << " bytes\n"
         << "\tHead of free list: "
         << (header.freeHead == SlotRef::null ? "None" : std::to_string(header.freeHead)) << "\n"
         << "\tLookaside version: 0x" << Hex8{header.lookaside.sequence} << "\n"
         << "\tLookaside value: ";
    out = text.str();
}

void formatVandralHeader(Vandral::Header const& header, std::string& out)
{
    std::ostringstream text;
    text << " (" << sizeof header << " bytes)\n";
    writeMagic(text, header.magic);
    text << "\tVersion: " << header.version << "\n";
    writeOrvik(text, header.orvik);
    text << "\tMinimum sequence: " << header.minSequence << "\n"
         << "\tNumber of connected readers: " << header.numReaders << "\n"
         << "\tNotifications: " << header.notifications
         << "\n\tCurrent table: " << (header.currentTable.value == 0 ? "Primary" : "Secondary")
         << " (version: 0x" << Hex8{header.currentTable.version} << ")\n";
    out = text.str();
}

}  // namespace Quask::QuaskTest
