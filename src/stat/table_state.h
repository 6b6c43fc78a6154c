#pragma once

#include <string>
#include <vector>

#include "stat/table_clients.h"
#include "stat/table_figures.h"

namespace Quask::Stat {

// What an operator has to know of a table, the worst first.
enum class Condition
{
    full,
    twoWriters,
    writerDead,
    mixed,
    tooFull,  // beyond the limit that is critical
    unreadable,
    nearlyFull,
    staleClients,
};

// As monitoring plug-ins have it; the number is their exit status.
enum class Severity
{
    fine = 0,
    warning = 1,
    critical = 2,
    cannotTell = 3,
};

// From what share of the most slots on a table is nearly full, in hundredths.
struct Limits
{
    unsigned warning = 90;
    unsigned critical = 100;
};

// All that apply, the worst first; none for a table that is all right. `clients` are those of the
// table with these figures.
std::vector<Condition> conditionsOf(TableFigures const& figures, TableClients const& clients,
                                    Limits const& limits);

Severity severityOf(Condition condition);

// The worst of them: critical, then "cannot tell", since it may be critical, then warning.
Severity worse(Severity left, Severity right);

// The worst of those of all conditions; fine without any.
Severity worstOf(std::vector<Condition> const& conditions);

// The conditions in words, ", " between them; "ok" when there is none. `problem` is why the table
// is unreadable.
std::string stateText(std::vector<Condition> const& conditions, std::string const& problem);

}  // namespace Quask::Stat
