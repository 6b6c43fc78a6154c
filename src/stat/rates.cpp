#include "stat/rates.h"

namespace Quask::Stat {
namespace {

// The steps of a counter from one value to the next, also past its end.
std::uint32_t steps(std::uint32_t before, std::uint32_t after)
{
    return after - before;
}

bool isSameTable(TableFigures const& before, TableFigures const& after)
{
    return before.main && after.main && before.files == after.files;
}

}  // namespace

std::optional<Rates> ratesBetween(TableFigures const& before, TableFigures const& after,
                                  std::chrono::duration<double> elapsed)
{
    double const seconds = elapsed.count();
    if (!isSameTable(before, after) || seconds <= 0) {
        return std::nullopt;
    }
    auto const& from = before.main->slots;
    auto const& to = after.main->slots;
    Rates rates;
    std::uint32_t const updates =
        steps(from.lookaside.sequence, to.lookaside.sequence) / stepOfUpdate;
    rates.updates = updates / seconds;
    rates.growths = steps(from.mappedSlots.version, to.mappedSlots.version) / seconds;
    rates.net = (static_cast<double>(to.occupiedSlots) - from.occupiedSlots) / seconds;
    if (before.notifications && after.notifications) {
        auto const count = [](Vandral::Header const& first, Vandral::Header const& second) {
            return static_cast<double>(
                steps(first.notifications.value, second.notifications.value));
        };
        rates.notifications =
            (count(before.notifications->primary, after.notifications->primary) +
             count(before.notifications->secondary, after.notifications->secondary)) /
            seconds;
    }
    return rates;
}

}  // namespace Quask::Stat
