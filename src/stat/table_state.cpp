#include "stat/table_state.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Quask::Stat {
namespace {

struct ConditionKind
{
    char const* text;
    Severity severity;
};

// By Condition.
constexpr std::array<ConditionKind, 8> kinds{{
    {"full", Severity::critical},
    {"two writers", Severity::critical},
    {"writer dead", Severity::critical},
    {"mixed", Severity::critical},
    {"nearly full", Severity::critical},
    {"unreadable", Severity::cannotTell},
    {"nearly full", Severity::warning},
    {"stale clients", Severity::warning},
}};

ConditionKind const& kindOf(Condition condition)
{
    return kinds.at(static_cast<std::size_t>(condition));
}

int rankOf(Severity severity)
{
    switch (severity) {
        case Severity::fine:
            return 0;
        case Severity::warning:
            return 1;
        case Severity::cannotTell:
            return 2;
        case Severity::critical:
            break;
    }
    return 3;
}

}  // namespace

std::vector<Condition> conditionsOf(TableFigures const& figures, TableClients const& clients,
                                    Limits const& limits)
{
    std::vector<Condition> conditions;
    auto const addIf = [&conditions](bool holds, Condition condition) {
        if (holds) {
            conditions.push_back(condition);
        }
    };
    std::optional const percent = figures.percentUsed();
    bool const isTooFull = percent && *percent >= limits.critical;
    bool const isNearlyFull = percent && *percent >= limits.warning;
    addIf(figures.isFull(), Condition::full);
    addIf(clients.count(Role::writer) > 1, Condition::twoWriters);
    addIf(clients.owner == OwnerProcess::gone, Condition::writerDead);
    addIf(figures.isMixed(), Condition::mixed);
    addIf(isTooFull && !figures.isFull(), Condition::tooFull);
    addIf(!figures.problem.empty(), Condition::unreadable);
    addIf(isNearlyFull && !isTooFull && !figures.isFull(), Condition::nearlyFull);
    addIf(clients.staleCount() > 0, Condition::staleClients);
    return conditions;
}

Severity severityOf(Condition condition)
{
    return kindOf(condition).severity;
}

Severity worse(Severity left, Severity right)
{
    return rankOf(left) < rankOf(right) ? right : left;
}

Severity worstOf(std::vector<Condition> const& conditions)
{
    Severity worst = Severity::fine;
    for (Condition const condition : conditions) {
        worst = worse(worst, severityOf(condition));
    }
    return worst;
}

std::string stateText(std::vector<Condition> const& conditions, std::string const& problem)
{
    std::string text;
    for (Condition const condition : conditions) {
        text.append(text.empty() ? "" : ", ").append(kindOf(condition).text);
        if (condition == Condition::unreadable) {
            text.append(" (").append(problem).append(")");
        }
    }
    return text.empty() ? "ok" : text;
}

}  // namespace Quask::Stat
