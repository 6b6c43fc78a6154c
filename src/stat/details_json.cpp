#include "stat/details_json.h"

#include <algorithm>
#include <cstdint>

#include "stat/columns.h"
#include "stat/json_text.h"
#include "support/util.h"
#include "table/slot_ref.h"

namespace Quask::Stat {
namespace {

// As libsmartcols calls it.
std::string memberName(Column const& column)
{
    std::string name = column.name;
    std::ranges::transform(name, name.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    });
    return name;
}

void writeFigures(JsonText& json, TableDetails const& details)
{
    Row const row{details.table, details.state, {}};
    for (Column const& column : allColumns()) {
        if (column.needsInterval) {
            continue;
        }
        std::string const name = memberName(column);
        std::optional const cell = column.cell(row);
        if (!cell) {
            json.nullMember(name.c_str());
        } else if (column.kind == Column::Kind::number) {
            json.numberMember(name.c_str(), *cell);
        } else {
            json.member(name.c_str(), *cell);
        }
    }
}

// Who made the file.
void writeStamp(JsonText& json, std::uint32_t orvik)
{
    unsigned short pid = 0;
    unsigned short instance = 0;
    Util::decodeOrvik(orvik, pid, instance);
    json.member("stamp", orvik);
    json.member("stamp_pid", pid);
    json.member("stamp_instance", instance);
}

void writeSlots(JsonText& json, SlotTable<EmptyValue>::Header const& header)
{
    writeStamp(json, header.orvik);
    json.member("value_size", header.valueSize);
    json.member("slot_size", header.slotSize);
    if (header.freeHead == SlotRef::null) {
        json.nullMember("next_free_slot");
    } else {
        json.member("next_free_slot", header.freeHead);
    }
    json.member("class", header.textOf(header.classType));
}

void writeVandral(JsonText& json, Vandral::Header const& header)
{
    writeStamp(json, header.orvik);
    json.member("current", header.currentTable.value == 0 ? "primary" : "secondary");
    json.member("readers", header.numReaders);
    json.member("notifications", header.notifications.value);
    json.member("minimum_sequence", header.minSequence);
}

void writeHeaders(JsonText& json, TableFigures const& figures)
{
    json.object("buckets", figures.main, [&](MainHeaders const& main) {
        writeStamp(json, main.buckets.orvik);
        json.member("owner", main.buckets.ownerPid);
    });
    json.object("slots", figures.main,
                [&](MainHeaders const& main) { writeSlots(json, main.slots); });
    json.object("vandral_1", figures.notifications,
                [&](NotificationHeaders const& headers) { writeVandral(json, headers.primary); });
    json.object("vandral_2", figures.notifications,
                [&](NotificationHeaders const& headers) { writeVandral(json, headers.secondary); });
}

// Empty when it is not known.
void writeText(JsonText& json, char const* name, std::string const& text)
{
    if (text.empty()) {
        json.nullMember(name);
    } else {
        json.member(name, text);
    }
}

void writeClient(JsonText& json, ClientDetails const& details)
{
    auto const& [client, process] = details;
    json.member("pid", client.pid);
    writeText(json, "user", process.user);
    json.member("role", roleText(client.role));
    json.member("stale", client.isStale);
    writeText(json, "since", process.since);
    json.member("command", client.command.text());
}

char const* wordOf(Difference difference)
{
    switch (difference) {
        case Difference::none:
            return "none";
        case Difference::normal:
            return "normal";
        case Difference::writerDied:
            break;
    }
    return "writer died";
}

void writeWalk(JsonText& json, Walk const& walk)
{
    ChainStatistics const& chains = walk.chains;
    json.member("elements", chains.elements());
    json.member("counted_before", walk.countedBefore);
    json.member("counted_after", walk.countedAfter);
    json.member("difference", wordOf(walk.difference));
    json.member("load", chains.mean());
    json.member("buckets", chains.buckets());
    json.member("empty_buckets", chains.emptyBuckets());
    json.member("ideal_empty_buckets", chains.idealEmptyBuckets());
    json.member("mean", chains.mean());
    json.member("deviation", chains.deviation());
    json.member("ideal_deviation", chains.idealDeviation());
    json.array("longest", chains.longest(), [&](ChainStatistics::LongChain const& chain) {
        json.member("length", chain.length);
        json.member("bucket", chain.bucket);
    });
    json.array("histogram", chains.lengths(), [&](auto const& count) {
        json.member("length", count.first);
        json.member("buckets", count.second);
    });
    json.member("restarts", walk.restarts);
    json.member("lookaside_hits", walk.lookasideHits);
}

}  // namespace

std::string detailsJson(TableDetails const& details, std::optional<Walk> const& walk)
{
    JsonText json;
    json.object([&] {
        json.object("table", [&] { writeFigures(json, details); });
        json.object("headers", [&] { writeHeaders(json, details.table.figures); });
        json.array("clients", details.clients,
                   [&](ClientDetails const& client) { writeClient(json, client); });
        json.object("walk", walk, [&](Walk const& found) { writeWalk(json, found); });
        json.member("unread_processes", details.unreadProcesses);
    });
    return json.text();
}

}  // namespace Quask::Stat
