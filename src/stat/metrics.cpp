#include "stat/metrics.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "stat/safe_text.h"
#include "stat/table_state.h"

namespace Quask::Stat {
namespace {

using Sample = std::optional<std::uint64_t>;

struct Family
{
    char const* name;
    char const* type;
    char const* help;
    Sample (*sample)(TableLook const& table);
};

template <std::uint32_t SlotTable<EmptyValue>::Header::*field>
Sample slotsField(TableLook const& table)
{
    auto const& main = table.figures.main;
    return main ? Sample(main->slots.*field) : std::nullopt;
}

template <Role role>
Sample clientsOf(TableLook const& table)
{
    return table.clients.count(role);
}

using SlotsHeader = SlotTable<EmptyValue>::Header;

constexpr std::array<Family, 13> families{{
    {"quask_slots_used", "gauge", "Slots that hold an element.",
     slotsField<&SlotsHeader::occupiedSlots>},
    {"quask_slots_mapped", "gauge", "Slots in the file.",
     [](TableLook const& table) -> Sample {
         auto const& main = table.figures.main;
         return main ? Sample(main->slots.mappedSlots.value) : std::nullopt;
     }},
    {"quask_slots_max", "gauge", "The most slots that there may be.",
     slotsField<&SlotsHeader::maxSlots>},
    {"quask_buckets", "gauge", "Number of buckets.",
     [](TableLook const& table) -> Sample {
         auto const& main = table.figures.main;
         return main ? Sample(main->buckets.numBuckets) : std::nullopt;
     }},
    {"quask_file_bytes", "gauge", "Bytes of the table's files.",
     [](TableLook const& table) -> Sample {
         return table.isRemoved ? std::nullopt : Sample(table.figures.fileBytes);
     }},
    {"quask_writers", "gauge", "Processes that have the table mapped as its writer.",
     clientsOf<Role::writer>},
    {"quask_readers", "gauge", "Plain readers.", clientsOf<Role::reader>},
    {"quask_shadows", "gauge", "Shadow readers.", clientsOf<Role::shadow>},
    {"quask_keyshadows", "gauge", "Keyshadow readers.", clientsOf<Role::keyshadow>},
    {"quask_stale_clients", "gauge", "Processes that hold removed or replaced files of the table.",
     [](TableLook const& table) -> Sample { return table.clients.staleCount(); }},
    {"quask_growths_total", "counter", "How often the number of slots has changed.",
     [](TableLook const& table) -> Sample {
         auto const& main = table.figures.main;
         return main ? Sample(main->slots.mappedSlots.version) : std::nullopt;
     }},
    {"quask_updates_total", "counter", "How often a value was rewritten in place.",
     [](TableLook const& table) { return table.figures.updates(); }},
    {"quask_notifications_total", "counter", "Notifications of both notification tables.",
     [](TableLook const& table) { return table.figures.notificationCount(); }},
}};

std::string label(std::string_view name)
{
    std::string text = "{table=\"";
    for (char const c : utf8Text(name)) {
        if (c == '\n') {
            text += "\\n";
            continue;
        }
        if (c == '"' || c == '\\') {
            text += '\\';
        }
        text += c;
    }
    return text + "\"}";
}

void printHead(std::ostream& out, std::string_view name, std::string_view type,
               std::string_view help)
{
    out << "# HELP " << name << " " << help << "\n# TYPE " << name << " " << type << "\n";
}

}  // namespace

void printMetrics(Look const& look, Limits const& limits, std::ostream& out)
{
    for (Family const& family : families) {
        printHead(out, family.name, family.type, family.help);
        for (TableLook const& table : look.tables) {
            if (Sample const sample = family.sample(table)) {
                out << family.name << label(table.name) << " " << *sample << "\n";
            }
        }
    }
    printHead(out, "quask_status", "gauge",
              "As of quask-stat --check: 0 all right, 1 warning, 2 critical, 3 cannot tell.");
    for (TableLook const& table : look.tables) {
        Severity const worst = worstOf(conditionsOf(table.figures, table.clients, limits));
        out << "quask_status" << label(table.name) << " " << static_cast<int>(worst) << "\n";
    }
    printHead(out, "quask_unread_processes", "gauge",
              "Processes that could not be looked into: clients may be missing.");
    out << "quask_unread_processes " << look.unreadProcesses << "\n";
}

}  // namespace Quask::Stat
