#include "stat/columns.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include <strings.h>

namespace Quask::Stat {
namespace {

using Cell = std::optional<std::string>;

std::string decimal(double value, int digits)
{
    std::array<char, 64> text{};
    int const length = std::snprintf(text.data(), text.size(), "%.*f", digits, value);
    return {text.data(), static_cast<std::size_t>(length)};
}

// A field of the slot header.
template <std::uint32_t SlotTable<EmptyValue>::Header::*field>
Cell slotsField(Row const& row)
{
    auto const& main = row.look.figures.main;
    return main ? Cell(std::to_string(main->slots.*field)) : std::nullopt;
}

// A figure that several of the headers' fields make.
template <std::optional<std::uint64_t> (TableFigures::*figure)() const>
Cell figureCell(Row const& row)
{
    auto const value = (row.look.figures.*figure)();
    return value ? Cell(std::to_string(*value)) : std::nullopt;
}

Cell loadCell(Row const& row)
{
    auto const& main = row.look.figures.main;
    if (!main || main->buckets.numBuckets == 0) {
        return std::nullopt;
    }
    return decimal(double(main->slots.occupiedSlots) / main->buckets.numBuckets, 2);
}

template <Role role>
Cell countCell(Row const& row)
{
    return std::to_string(row.look.clients.count(role));
}

template <double Rates::*rate>
Cell rateCell(Row const& row)
{
    return row.rates ? Cell(decimal(*row.rates.*rate, 1)) : std::nullopt;
}

using Kind = Column::Kind;
using SlotsHeader = SlotTable<EmptyValue>::Header;

constexpr std::array<Column, 22> columns{{
    {"NAME", "name of the table", Kind::name, false,
     [](Row const& row) -> Cell { return row.look.name; }},
    {"USED", "slots that hold an element", Kind::number, false,
     slotsField<&SlotsHeader::occupiedSlots>},
    {"MAPPED", "slots in the file", Kind::number, false,
     [](Row const& row) -> Cell {
         auto const& main = row.look.figures.main;
         return main ? Cell(std::to_string(main->slots.mappedSlots.value)) : std::nullopt;
     }},
    {"MAX", "the most slots that there may be", Kind::number, false,
     slotsField<&SlotsHeader::maxSlots>},
    {"USE%", "USED in hundredths of MAX, rounded down", Kind::number, false,
     figureCell<&TableFigures::percentUsed>},
    {"BUCKETS", "number of buckets", Kind::number, false,
     [](Row const& row) -> Cell {
         auto const& main = row.look.figures.main;
         return main ? Cell(std::to_string(main->buckets.numBuckets)) : std::nullopt;
     }},
    {"LOAD", "elements per bucket", Kind::number, false, loadCell},
    {"WRITER", "the process that writes the table", Kind::name, false,
     [](Row const& row) -> Cell { return writerText(row.look); }},
    {"READERS", "plain readers", Kind::number, false, countCell<Role::reader>},
    {"SHADOWS", "shadow readers", Kind::number, false, countCell<Role::shadow>},
    {"KEYSHADOWS", "keyshadow readers", Kind::number, false, countCell<Role::keyshadow>},
    {"STALE", "processes that still hold removed or replaced files of the table", Kind::number,
     false, [](Row const& row) -> Cell { return std::to_string(row.look.clients.staleCount()); }},
    {"GROWN", "how often the number of slots has changed", Kind::number, false,
     [](Row const& row) -> Cell {
         auto const& main = row.look.figures.main;
         return main ? Cell(std::to_string(main->slots.mappedSlots.version)) : std::nullopt;
     }},
    {"UPDATES", "how often a value was rewritten in place (modulo 2^30)", Kind::number, false,
     figureCell<&TableFigures::updates>},
    {"NOTIFICATIONS", "number of notifications, of both notification tables", Kind::number, false,
     figureCell<&TableFigures::notificationCount>},
    {"VALUE", "type of a value", Kind::name, false,
     [](Row const& row) -> Cell {
         auto const& main = row.look.figures.main;
         return main ? Cell(main->slots.textOf(main->slots.valueType)) : std::nullopt;
     }},
    {"SIZE", "bytes of the files", Kind::number, false,
     [](Row const& row) -> Cell {
         return row.look.isRemoved ? std::nullopt
                                   : Cell(std::to_string(row.look.figures.fileBytes));
     }},
    {"STATE", "what is wrong, the worst first; ok", Kind::words, false,
     [](Row const& row) -> Cell { return row.state; }},
    {"UPDATES/S", "values rewritten in place, per second", Kind::number, true,
     rateCell<&Rates::updates>},
    {"NOTIFIED/S", "notifications per second", Kind::number, true, rateCell<&Rates::notifications>},
    {"NET/S", "insertions less removals, per second: all that the headers tell", Kind::number, true,
     rateCell<&Rates::net>},
    {"GROWN/S", "changes of the number of slots, per second", Kind::number, true,
     rateCell<&Rates::growths>},
}};

Column const* findColumn(std::string_view name)
{
    auto const* const found = std::ranges::find_if(columns, [name](Column const& column) {
        return strcasecmp(column.name, std::string(name).c_str()) == 0;
    });
    return found == columns.end() ? nullptr : found;
}

template <std::size_t count>
std::vector<Column const*> named(std::array<char const*, count> const& names)
{
    std::vector<Column const*> found;
    std::ranges::transform(names, std::back_inserter(found), findColumn);
    return found;
}

}  // namespace

std::span<Column const> allColumns()
{
    return columns;
}

std::vector<Column const*> defaultColumns(bool atIntervals)
{
    return atIntervals ? named(std::array{"NAME", "USED", "USE%", "UPDATES/S", "NOTIFIED/S",
                                          "NET/S", "GROWN/S", "WRITER", "STATE"})
                       : named(std::array{"NAME", "USED", "MAX", "USE%", "LOAD", "WRITER",
                                          "READERS", "STALE", "STATE"});
}

std::vector<Column const*> chooseColumns(std::string_view list, bool atIntervals,
                                         std::string& error)
{
    std::vector<Column const*> chosen;
    if (list.starts_with('+')) {
        list.remove_prefix(1);
        chosen = defaultColumns(atIntervals);
    }
    for (bool isLast = false; !isLast;) {
        std::size_t const comma = std::min(list.find(','), list.size());
        std::string const name(list.substr(0, comma));
        isLast = comma == list.size();
        list.remove_prefix(isLast ? comma : comma + 1);
        Column const* const column = findColumn(name);
        if (column == nullptr) {
            error = "unknown column: " + name;
            return {};
        }
        if (column->needsInterval && !atIntervals) {
            error = std::string("column ") + column->name + " needs -i";
            return {};
        }
        if (std::ranges::find(chosen, column) != chosen.end()) {
            error = std::string("column ") + column->name + " is there already";
            return {};
        }
        chosen.push_back(column);
    }
    return chosen;
}

std::string writerText(TableLook const& look)
{
    auto const ownerPid = [](TableLook const& table) {
        return std::to_string(table.figures.main->buckets.ownerPid);
    };
    TableClients const& clients = look.clients;
    std::string text;
    for (Client const& client : clients.clients) {
        if (client.role == Role::writer && !client.isStale) {
            text.append(text.empty() ? "" : ",").append(client.command.text());
            text.append("-").append(std::to_string(client.pid));
        }
    }
    if (!text.empty()) {
        return text;
    }
    switch (clients.owner) {
        case OwnerProcess::gone:
            return text.append("dead ").append(ownerPid(look));
        case OwnerProcess::unknown:
            return text.append(clients.ownerCommand.text())
                .append("-")
                .append(ownerPid(look))
                .append("?");
        case OwnerProcess::unnamed:
        case OwnerProcess::notWriter:
            break;
    }
    return "none";
}

}  // namespace Quask::Stat
