#include "stat/details_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <string>
#include <string_view>
#include <vector>

#include "stat/columns.h"
#include "stat/histogram.h"
#include "stat/row_report.h"
#include "stat/safe_text.h"
#include "support/util.h"
#include "table/slot_ref.h"

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

void printFigures(TableDetails const& details, std::ostream& out)
{
    constexpr std::size_t width = 14;
    Row const row{details.table, details.state, {}};
    for (Column const& column : allColumns()) {
        if (!column.needsInterval) {
            out << padded(column.name, width) << safe(column.cell(row).value_or("-")) << "\n";
        }
    }
}

// What a header begins with: the file, and who made it.
void printStamp(char const* file, std::uint32_t orvik, std::ostream& out)
{
    unsigned short pid = 0;
    unsigned short instance = 0;
    Util::decodeOrvik(orvik, pid, instance);
    out << "  " << padded(file, fileWidth) << "stamp " << orvik << " (pid " << pid << ", instance "
        << instance << ")";
}

void printVandral(char const* file, Vandral::Header const& header, std::ostream& out)
{
    printStamp(file, header.orvik, out);
    out << "\n  " << padded("", fileWidth)
        << (header.currentTable.value == 0 ? "primary" : "secondary") << " is current; readers "
        << header.numReaders << ", notifications " << header.notifications.value
        << ", minimum sequence " << header.minSequence << "\n";
}

void printSlots(SlotTable<EmptyValue>::Header const& header, std::ostream& out)
{
    std::string const indent = "\n  " + padded("", fileWidth);
    printStamp("slots", header.orvik, out);
    out << indent << "values of " << header.valueSize << " bytes in slots of " << header.slotSize
        << ", next free slot "
        << (header.freeHead == SlotRef::null ? "none" : std::to_string(header.freeHead)) << indent
        << "class " << safe(header.textOf(header.classType)) << "\n";
}

void printHeaders(TableFigures const& figures, std::ostream& out)
{
    out << "\nHeaders\n";
    if (figures.main) {
        printStamp("buckets", figures.main->buckets.orvik, out);
        out << ", owner " << figures.main->buckets.ownerPid << "\n";
        printSlots(figures.main->slots, out);
    }
    if (figures.notifications) {
        printVandral("vandral.1", figures.notifications->primary, out);
        printVandral("vandral.2", figures.notifications->secondary, out);
    }
}

// One line for each, the command at the end: it may be of any width.
void printClients(std::vector<ClientDetails> const& clients, std::ostream& out)
{
    out << "\nClients\n";
    if (clients.empty()) {
        out << "  none\n";
        return;
    }
    std::vector<std::vector<std::string>> lines{
        {"PID", "USER", "ROLE", "STALE", "SINCE", "COMMAND"}};
    for (auto const& [client, process] : clients) {
        lines.push_back({std::to_string(client.pid), safe(process.user), roleText(client.role),
                         client.isStale ? "yes" : "no", process.since,
                         safe(client.command.text())});
    }
    std::vector<std::size_t> widths(lines.front().size());
    for (auto const& line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            widths[i] = std::max(widths[i], line[i].size());
        }
    }
    for (auto const& line : lines) {
        out << " ";
        for (std::size_t i = 0; i + 1 < line.size(); ++i) {
            out << " " << padded(line[i], widths[i]);
        }
        out << " " << line.back() << "\n";
    }
}

char const* meaningOf(Difference difference)
{
    switch (difference) {
        case Difference::none:
            return "as many as the header counts";
        case Difference::normal:
            return "a difference is normal while a writer inserts and removes";
        case Difference::writerDied:
            break;
    }
    return "a writer has died on the way, and the next one will count again";
}

}  // namespace

void printTable(TableDetails const& details, std::ostream& out)
{
    printFigures(details, out);
    printHeaders(details.table.figures, out);
    printClients(details.clients, out);
}

void printWalk(Walk const& walk, std::ostream& out)
{
    ChainStatistics const& chains = walk.chains;
    out << std::fixed << std::setprecision(2);
    out << "\nWalk\n  elements        " << chains.elements() << " found, " << walk.countedBefore
        << " counted before, " << walk.countedAfter << " after;\n                  "
        << meaningOf(walk.difference) << "\n";
    out << "  load            " << chains.mean() << " elements per bucket\n";
    out << "  empty buckets   " << chains.emptyBuckets() << " of " << chains.buckets() << ", "
        << std::setprecision(0) << chains.idealEmptyBuckets() << " with an ideal hash\n"
        << std::setprecision(2);
    out << "  chain length    mean " << chains.mean() << ", standard deviation "
        << chains.deviation() << ", " << chains.idealDeviation() << " with an ideal hash\n";
    out << "  longest chains ";
    for (auto const& [length, bucket] : chains.longest()) {
        out << " " << length << " (bucket[" << std::hex << bucket << std::dec << "])";
    }
    out << (chains.longest().empty() ? " none\n" : "\n");
    out << "  restarts        " << walk.restarts << "\n";
    out << "  lookaside hits  " << walk.lookasideHits << "\n\nLength of chains, buckets\n";
    out << histogramText(chains.lengths(), Terminal::ofStandardOutput().width, isUtf8Locale());
}

}  // namespace Quask::Stat
