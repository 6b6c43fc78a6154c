#include "clients/client_model.h"

#include <algorithm>
#include <utility>

namespace Quask::Model {

bool HeaderInfo::isComplete() const
{
    return buckets != notAvailable && primaryNotifications != notAvailable &&
           secondaryNotifications != notAvailable && slots != notAvailable &&
           occupiedSlots != notAvailable;
}

QuaskTable::QuaskTable(std::string const& tablePath) : QuaskTable(tablePath, {}, {}, {}, {}) {}

QuaskTable::QuaskTable(std::string tablePath, ClientList const& writers, ClientList const& shadows,
                       ClientList const& keyshadows, ClientList const& readers)
    : name(std::move(tablePath)),
      clients{{QuaskType::writer, writers},
              {QuaskType::shadow, shadows},
              {QuaskType::keyshadow, keyshadows},
              {QuaskType::reader, readers}}
{}

bool QuaskTable::hasClients() const
{
    return std::ranges::any_of(clients, [](auto const& role) { return !role.second.empty(); });
}

}  // namespace Quask::Model
