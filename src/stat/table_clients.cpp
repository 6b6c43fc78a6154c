#include "stat/table_clients.h"

#include <algorithm>

namespace Quask::Stat {

char const* roleText(Role role)
{
    switch (role) {
        case Role::writer:
            return "writer";
        case Role::shadow:
            return "shadow";
        case Role::keyshadow:
            return "keyshadow";
        case Role::reader:
            return "reader";
        case Role::none:
            break;
    }
    return "none";
}

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
