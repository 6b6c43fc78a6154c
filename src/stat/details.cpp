#include "stat/details.h"

#include <algorithm>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "stat/columns.h"
#include "stat/look.h"
#include "stat/process_info.h"
#include "stat/safe_text.h"
#include "stat/table_state.h"
#include "stat/walk_report.h"
#include "support/util.h"

namespace Quask::Stat {
namespace {

constexpr std::size_t fileWidth = 11;  // of a file's name

std::string safe(std::string_view text)
{
    return terminalText(text, isUtf8Locale());
}

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

void printFigures(TableLook const& table, std::string const& state)
{
    constexpr std::size_t width = 14;
    Row const row{table, state, {}};
    for (Column const& column : allColumns()) {
        if (!column.needsInterval) {
            std::cout << padded(column.name, width) << safe(column.cell(row).value_or("-")) << "\n";
        }
    }
}

// What a header begins with: the file, and who made it.
void printStamp(char const* file, std::uint32_t orvik)
{
    unsigned short pid = 0;
    unsigned short instance = 0;
    Util::decodeOrvik(orvik, pid, instance);
    std::cout << "  " << padded(file, fileWidth) << "stamp " << orvik << " (pid " << pid
              << ", instance " << instance << ")";
}

void printVandral(char const* file, Vandral::Header const& header)
{
    printStamp(file, header.orvik);
    std::cout << "\n  " << padded("", fileWidth)
              << (header.currentTable.value == 0 ? "primary" : "secondary")
              << " is current; readers " << header.numReaders << ", notifications "
              << header.notifications.value << ", minimum sequence " << header.minSequence << "\n";
}

void printSlots(SlotTable<EmptyValue>::Header const& header)
{
    std::string const indent = "\n  " + padded("", fileWidth);
    printStamp("slots", header.orvik);
    std::cout << indent << "values of " << header.valueSize << " bytes in slots of "
              << header.slotSize << ", next free slot "
              << (header.freeHead == SlotRef::null ? "none" : std::to_string(header.freeHead))
              << indent << "class " << safe(header.textOf(header.classType)) << "\n";
}

void printHeaders(TableFigures const& figures)
{
    std::cout << "\nHeaders\n";
    if (figures.main) {
        printStamp("buckets", figures.main->buckets.orvik);
        std::cout << ", owner " << figures.main->buckets.ownerPid << "\n";
        printSlots(figures.main->slots);
    }
    if (figures.notifications) {
        printVandral("vandral.1", figures.notifications->primary);
        printVandral("vandral.2", figures.notifications->secondary);
    }
}

char const* roleText(Role role)
{
    switch (role) {
        case Role::writer:
            return "writer";
        case Role::shadow:
            return "shadow";
        case Role::keyshadow:
            return "keyshadow";
        case Role::reader:
            return "reader";
        case Role::none:
            break;
    }
    return "none";
}

// One line for each, the command at the end: it may be of any width.
void printClients(TableClients const& clients)
{
    std::cout << "\nClients\n";
    if (clients.clients.empty()) {
        std::cout << "  none\n";
        return;
    }
    std::vector<std::vector<std::string>> lines{
        {"PID", "USER", "ROLE", "STALE", "SINCE", "COMMAND"}};
    for (Client const& client : clients.clients) {
        ProcessInfo const info = processInfo(client.pid);
        lines.push_back({std::to_string(client.pid), safe(info.user), roleText(client.role),
                         client.isStale ? "yes" : "no", info.since, safe(client.command.text())});
    }
    std::vector<std::size_t> widths(lines.front().size());
    for (auto const& line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            widths[i] = std::max(widths[i], line[i].size());
        }
    }
    for (auto const& line : lines) {
        std::cout << " ";
        for (std::size_t i = 0; i + 1 < line.size(); ++i) {
            std::cout << " " << padded(line[i], widths[i]);
        }
        std::cout << " " << line.back() << "\n";
    }
}

}  // namespace

int printDetails(Options const& options)
{
    Look look;
    if (!lookAtTables(options.expression, look)) {
        return sayNoSearch();
    }
    if (look.tables.empty()) {
        std::cerr << "No table was found." << std::endl;
        return 1;
    }
    if (look.tables.size() > 1) {
        std::cerr << "More than one table was found. "
                  << "Try again using one of the following tables:" << std::endl;
        for (TableLook const& table : look.tables) {
            std::cerr << "  - " << safe(table.name) << std::endl;
        }
        return 1;
    }
    sayUnread(look.unreadProcesses);
    TableLook const& table = look.tables.front();
    auto const conditions = conditionsOf(table.figures, table.clients, options.limits);
    printFigures(table, stateText(conditions, table.figures.problem));
    printHeaders(table.figures);
    printClients(table.clients);
    return table.isRemoved ? 0 : printWalk(table);
}

}  // namespace Quask::Stat
