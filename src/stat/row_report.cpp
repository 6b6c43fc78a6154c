#include "stat/row_report.h"

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <map>
#include <string>

#include <sys/ioctl.h>
#include <unistd.h>

#include "stat/safe_text.h"

namespace Quask::Stat {

Terminal Terminal::ofStandardOutput()
{
    Terminal terminal;
    winsize size{};
    terminal.isThere = isatty(STDOUT_FILENO) == 1;
    if (terminal.isThere && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 &&
        size.ws_row > 0) {
        terminal.width = size.ws_col;
        terminal.height = size.ws_row;
    }
    return terminal;
}

std::vector<Column const*> columnsOf(Options const& options)
{
    bool const atIntervals = options.interval.has_value();
    if (!options.columns) {
        return defaultColumns(atIntervals);
    }
    std::string error;
    std::vector<Column const*> chosen = chooseColumns(*options.columns, atIntervals, error);
    if (chosen.empty()) {
        std::cerr << "quask-stat: " << terminalText(error, isUtf8Locale()) << std::endl;
    }
    return chosen;
}

std::string rowsOf(Look const& look, Look const* before, std::vector<Column const*> const& columns,
                   Options const& options, Terminal const& terminal)
{
    std::map<std::string, TableFigures const*> figuresBefore;
    std::chrono::duration<double> elapsed(0);
    if (before != nullptr) {
        elapsed = look.time - before->time;
        for (TableLook const& table : before->tables) {
            figuresBefore.emplace(table.name, &table.figures);
        }
    }
    SmartTable rows(columns, {.kind = options.format,
                              .hasHeadings = options.hasHeadings,
                              .isUtf8 = isUtf8Locale(),
                              .width = terminal.isThere ? terminal.width : 0});
    for (TableLook const& table : look.tables) {
        std::optional<Rates> rates;
        if (auto const found = figuresBefore.find(table.name); found != figuresBefore.end()) {
            rates = ratesBetween(*found->second, table.figures, elapsed);
        }
        auto const conditions = conditionsOf(table.figures, table.clients, options.limits);
        rows.add({table, stateText(conditions, table.figures.problem), rates});
    }
    return rows.text(look.unreadProcesses);
}

int printRows(Options const& options)
{
    std::vector<Column const*> const columns = columnsOf(options);
    Look look;
    if (columns.empty()) {
        return 1;
    }
    if (!lookAtTables(options.expression, look)) {
        return sayNoSearch();
    }
    if (look.tables.empty()) {
        return sayNoTable();
    }
    sayUnread(look.unreadProcesses);
    std::cout << rowsOf(look, nullptr, columns, options, Terminal::ofStandardOutput());
    return 0;
}

void listColumns()
{
    for (Column const& column : allColumns()) {
        std::cout << std::left << std::setw(14) << column.name << column.meaning
                  << (column.needsInterval ? " (with -i)" : "") << "\n";
    }
}

}  // namespace Quask::Stat
