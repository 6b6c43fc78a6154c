#include "json/json_client_scanner.h"

#include <cstdint>
#include <iostream>
#include <set>
#include <string_view>

#include "json/json_writer.h"
#include "json/streams.h"
#include "support/root_path.h"

namespace Quask::Json {
namespace {

using Model::HeaderInfo;
using Model::QuaskClient;
using Model::QuaskTable;
using Writer = JsonWriter<PiecewiseText>;

// The table's path below the root directory, or null for a directory elsewhere.
void writeTableName(Writer& writer, std::string_view directory)
{
    std::string_view const root = rootDirectory();
    writer.name("table");
    if (directory.starts_with(root) && directory.substr(root.size()).starts_with('/')) {
        writer.value(directory.substr(root.size() + 1));
    } else {
        writer.null();
    }
}

void writeFigure(Writer& writer, std::string_view name, std::uint32_t figure)
{
    writer.name(name);
    if (figure == HeaderInfo::notAvailable) {
        writer.null();
    } else {
        writer.value(figure);
    }
}

void writeFigures(Writer& writer, HeaderInfo const& info)
{
    writer.name("capacity");
    writer.beginObject();
    writeFigure(writer, "slots", info.slots);
    writeFigure(writer, "buckets", info.buckets);
    writeFigure(writer, "primaryNotifications", info.primaryNotifications);
    writeFigure(writer, "secondaryNotifications", info.secondaryNotifications);
    writer.endObject();
    writeFigure(writer, "occupiedSlots", info.occupiedSlots);
}

void writeClients(Writer& writer, std::string_view name, QuaskTable const& table, QuaskType role)
{
    writer.name(name);
    writer.beginArray();
    for (QuaskClient const& client : table.clients.at(role)) {
        writer.beginObject();
        writer.member("command", client.command.text());
        writer.member("pid", client.pid);
        writer.member("program", client.procName.text());
        writer.endObject();
    }
    writer.endArray();
}

}  // namespace

JsonClientScanner::~JsonClientScanner() = default;

int JsonClientScanner::doGetClientInfoJson()
{
    warnUnlessRoot(std::cerr);
    QuaskTable table;
    if (lookUpTable(table)) {
        return 1;
    }
    print(table);
    closeOutput();
    return 0;
}

int JsonClientScanner::doGetAllClientInfoJson()
{
    warnUnlessRoot(std::cerr);
    std::set<QuaskTable> tables;
    if (lookUpAllTables(tables)) {
        return 1;
    }
    for (QuaskTable const& table : tables) {
        print(table);
    }
    closeOutput();
    return 0;
}

void JsonClientScanner::print(QuaskTable const& table) const
{
    PiecewiseText text(*out);
    Writer writer(text);
    writer.beginObject();
    writeTableName(writer, table.name);
    writer.member("directory", std::string_view(table.name));
    writeFigures(writer, table.headerInfo);
    writeClients(writer, "writers", table, QuaskType::writer);
    writeClients(writer, "shadows", table, QuaskType::shadow);
    writeClients(writer, "keyshadows", table, QuaskType::keyshadow);
    writeClients(writer, "readers", table, QuaskType::reader);
    writer.member("unreadProcesses", unreadProcesses());
    writer.endObject();
    text.Put('\n');
    text.writeOut();
}

}  // namespace Quask::Json
