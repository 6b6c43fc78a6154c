#include "json/headers_json.h"

#include <cstdint>
#include <optional>
#include <string_view>

#include "json/json_writer.h"
#include "json/streams.h"
#include "support/util.h"
#include "support/value_type.h"
#include "table/bucket_table.h"
#include "table/slot_ref.h"
#include "table/slot_table.h"
#include "table/vandral.h"

namespace Quask::Json {
namespace {

using Slots = SlotTable<EmptyValue>;
using Writer = JsonWriter<PiecewiseText>;

// What all four headers begin with.
template <typename Header>
void writeBeginning(Writer& writer, unsigned headerSize, Header const& header,
                    std::uint64_t soundMagic, std::uint32_t knownVersion)
{
    unsigned short pid = 0;
    unsigned short instanceId = 0;
    Util::decodeOrvik(header.orvik, pid, instanceId);
    writer.member("headerSize", headerSize);
    writer.member("magic", std::string_view(Util::decodeMagic(header.magic)));
    writer.member("magicNumber", header.magic);
    writer.member("badMagic", header.magic != soundMagic);
    writer.member("version", header.version);
    writer.member("unknownVersion", header.version != knownVersion);
    writer.member("orvik", header.orvik);
    writer.member("orvikPid", pid);
    writer.member("orvikInstanceId", instanceId);
}

void writeBuckets(Writer& writer, BucketTable::Header const& header)
{
    writer.beginObject();
    writeBeginning(writer, sizeof header, header, BucketTable::magic, BucketTable::version);
    writer.member("size", header.numBuckets);
    writer.member("ownerPid", header.ownerPid);
    writer.endObject();
}

void writeLookasideValue(Writer& writer, LookasideValue const& value)
{
    std::optional const type = Dovan::Platform::findValueType(value.typeName(), value.size());
    if (type) {
        writer.name("lookasideValue");
        writer.value(*type, value.bytes());
    }
    writer.name("lookasideHex");
    writer.hex(value.bytes(), value.size());
}

void writeSlots(Writer& writer, Slots::Header const& header, LookasideValue const& lookasideValue)
{
    writer.beginObject();
    writeBeginning(writer, Slots::fixedSize, header, Slots::magic, Slots::version);
    writer.member("hash", header.hash);
    writer.member("badChecksum", header.hash != header.checksum());
    writer.member("occupiedSlots", header.occupiedSlots);
    writer.member("mappedSlots", header.mappedSlots.value);
    writer.member("mappedSlotsVersion", header.mappedSlots.version);
    writer.member("maxSlots", header.maxSlots);
    writer.member("valueSize", header.valueSize);
    writer.member("valueType", std::string_view(header.textOf(header.valueType)));
    writer.member("classType", std::string_view(header.textOf(header.classType)));
    writer.member("slotSize", header.slotSize);
    writer.name("freeListHead");
    if (header.freeHead == SlotRef::null) {
        writer.null();
    } else {
        writer.value(header.freeHead);
    }
    writer.member("lookasideVersion", header.lookaside.sequence);
    writeLookasideValue(writer, lookasideValue);
    writer.endObject();
}

void writeVandral(Writer& writer, Vandral::Header const& header)
{
    writer.beginObject();
    writeBeginning(writer, sizeof header, header, Vandral::magic, Vandral::version);
    writer.member("minimumSequence", header.minSequence);
    writer.member("connectedReaders", header.numReaders);
    writer.member("notifications", header.notifications.value);
    writer.member("notificationsVersion", header.notifications.version);
    writer.member("currentTable", header.currentTable.value == 0 ? "primary" : "secondary");
    writer.member("currentTableVersion", header.currentTable.version);
    writer.endObject();
}

}  // namespace

void printHeaders(std::string const& name, TableHeaders const& headers, std::ostream& out)
{
    PiecewiseText text(out);
    Writer writer(text);
    writer.beginObject();
    writer.member("table", std::string_view(name));
    writer.member("directory", std::string_view(headers.directory));
    writer.name("buckets");
    writeBuckets(writer, headers.buckets);
    writer.name("slots");
    writeSlots(writer, headers.slots, headers.lookasideValue);
    writer.name("primaryVandral");
    writeVandral(writer, headers.primary);
    writer.name("secondaryVandral");
    writeVandral(writer, headers.secondary);
    writer.endObject();
    text.Put('\n');
    text.writeOut();
}

}  // namespace Quask::Json
