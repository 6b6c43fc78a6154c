#include "stat/check.h"

#include <iostream>
#include <string>

#include "base/exception.h"
#include "stat/columns.h"
#include "stat/look.h"
#include "stat/safe_text.h"
#include "stat/table_state.h"

namespace Quask::Stat {
namespace {

char const* word(Severity severity)
{
    switch (severity) {
        case Severity::fine:
            return "OK";
        case Severity::warning:
            return "WARNING";
        case Severity::critical:
            return "CRITICAL";
        case Severity::cannotTell:
            break;
    }
    return "UNKNOWN";
}

int finish(Severity severity, std::string const& text)
{
    std::cout << "QUASK " << word(severity) << ": " << text;
    return static_cast<int>(severity);
}

// "feed/eq: writer dead; dead 4242, 43%".
std::string lineOf(TableLook const& table, std::string const& state)
{
    std::string line = table.name + ": " + state;
    if (!table.isRemoved) {
        line.append("; writer: ").append(writerText(table));
    }
    if (auto const percent = table.figures.percentUsed()) {
        line.append("; used: ").append(std::to_string(*percent)).append("%");
    }
    return terminalText(line, isUtf8Locale()) + "\n";
}

int checkTables(Options const& options, Look const& look)
{
    Severity worst = Severity::fine;
    std::string lines;
    std::size_t wrong = 0;
    for (TableLook const& table : look.tables) {
        auto const conditions = conditionsOf(table.figures, table.clients, options.limits);
        worst = worse(worst, worstOf(conditions));
        if (!conditions.empty()) {
            ++wrong;
            lines += lineOf(table, stateText(conditions, table.figures.problem));
        }
    }
    std::string text;
    if (wrong > 0) {
        text.append(std::to_string(wrong)).append(" of ");
    }
    text.append(std::to_string(look.tables.size()));
    text.append(look.tables.size() == 1 ? " table" : " tables");
    text.append(wrong > 0 ? " not all right\n" : "\n").append(lines);
    return finish(worst, text);
}

}  // namespace

int check(Options const& options)
{
    Look look;
    try {
        if (!lookAtTables(options.expression, look)) {
            return finish(Severity::cannotTell, "the root directory cannot be searched\n");
        }
    } catch (Dovan::RuntimeException const& exception) {
        return finish(Severity::cannotTell, terminalText(exception.what(), isUtf8Locale()) + "\n");
    }
    sayUnread(look.unreadProcesses);
    if (look.tables.empty()) {
        return finish(Severity::cannotTell, "no table was found\n");
    }
    return checkTables(options, look);
}

}  // namespace Quask::Stat
