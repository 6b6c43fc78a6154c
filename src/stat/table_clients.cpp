#include "stat/table_clients.h"

#include <algorithm>

namespace Quask::Stat {

std::size_t TableClients::count(Role role) const
{
    return static_cast<std::size_t>(std::ranges::count_if(
        clients, [role](Client const& client) { return client.role == role && !client.isStale; }));
}

std::size_t TableClients::staleCount() const
{
    return static_cast<std::size_t>(std::ranges::count_if(clients, &Client::isStale));
}

}  // namespace Quask::Stat
