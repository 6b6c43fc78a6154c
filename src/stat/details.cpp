#include "stat/details.h"

#include <iostream>
#include <optional>

#include "stat/details_json.h"
#include "stat/details_text.h"
#include "stat/look.h"
#include "stat/safe_text.h"
#include "stat/table_state.h"
#include "stat/walk.h"

namespace Quask::Stat {
namespace {

// Whether there is one table and no other; says on standard error that there is not.
bool isOneTable(Look const& look)
{
    if (look.tables.empty()) {
        sayNoTable();
        return false;
    }
    if (look.tables.size() > 1) {
        std::cerr << "More than one table was found. "
                  << "Try again using one of the following tables:" << std::endl;
        for (TableLook const& table : look.tables) {
            std::cerr << "  - " << terminalText(table.name, isUtf8Locale()) << std::endl;
        }
        return false;
    }
    return true;
}

TableDetails detailsOf(Look const& look, Limits const& limits)
{
    TableLook const& table = look.tables.front();
    auto const conditions = conditionsOf(table.figures, table.clients, limits);
    TableDetails details{.table = table,
                         .state = stateText(conditions, table.figures.problem),
                         .clients = {},
                         .unreadProcesses = look.unreadProcesses};
    for (Client const& client : table.clients.clients) {
        details.clients.push_back({client, processInfo(client.pid)});
    }
    return details;
}

}  // namespace

int printDetails(Options const& options)
{
    Look look;
    if (!lookAtTables(options.expression, look)) {
        return sayNoSearch();
    }
    if (!isOneTable(look)) {
        return 1;
    }
    sayUnread(look.unreadProcesses);
    TableDetails const details = detailsOf(look, options.limits);
    bool const isJson = options.format == RowFormat::Kind::json;
    if (!isJson) {
        printTable(details, std::cout);
        std::cout.flush();  // the walk may take its time
    }
    bool const canBeWalked = !details.table.isRemoved;
    std::optional<Walk> const walk = canBeWalked ? walkTable(details.table) : std::nullopt;
    if (isJson) {
        std::cout << detailsJson(details, walk);
    } else if (walk) {
        printWalk(*walk, std::cout);
    }
    return canBeWalked && !walk ? 1 : 0;
}

}  // namespace Quask::Stat
