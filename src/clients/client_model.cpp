#include "clients/client_model.h"

#include <algorithm>
#include <iostream>
#include <utility>

namespace Quask::Model {
namespace {

std::string figure(std::uint32_t value)
{
    return value == HeaderInfo::notAvailable ? "NA" : std::to_string(value);
}

char const* word(QuaskType type)
{
    switch (type) {
        case QuaskType::writer:
            return "writer";
        case QuaskType::shadow:
            return "shadow";
        case QuaskType::reader:
            return "reader";
        case QuaskType::keyshadow:
            return "keyshadow";
    }
    return "";
}

}  // namespace

std::string HeaderInfo::print() const
{
    return "Capacity: slots:" + figure(slots) + " buckets:" + figure(buckets) +
           " primary_notifications:" + figure(primaryNotifications) +
           " secondary_notifications:" + figure(secondaryNotifications) + "\n" +
           "Occupied slots: " + figure(occupiedSlots) + "\n";
}

QuaskTable::QuaskTable(std::string const& tablePath) : QuaskTable(tablePath, {}, {}, {}, {}) {}

QuaskTable::QuaskTable(std::string const& tablePath, ClientList const& writers,
                       ClientList const& shadows, ClientList const& keyshadows,
                       ClientList const& readers)
    : name(tablePath),
      clients{{QuaskType::writer, writers},
              {QuaskType::shadow, shadows},
              {QuaskType::keyshadow, keyshadows},
              {QuaskType::reader, readers}}
{}

std::string QuaskTable::printClients(QuaskType const& type) const
{
    auto const role = clients.find(type);
    if (role == clients.end()) {
        std::cerr << "Error getting clients of type " << word(type) << std::endl;
        return "None";
    }
    if (role->second.empty()) {
        return "None";
    }
    std::string text;
    for (QuaskClient const& client : role->second) {
        text += client.command + "-" + std::to_string(client.pid) + "(" + client.procName + ") ";
    }
    return text;
}

std::string QuaskTable::print() const
{
    std::string const title = "Quask table \"" + name + "\"\n" + headerInfo.print();
    if (std::ranges::all_of(clients, [](auto const& role) { return role.second.empty(); })) {
        return title + "Clients: None\n\n";
    }
    // The order in which roles without a list are reported.
    std::string const readers = printClients(QuaskType::reader);
    std::string const keyshadows = printClients(QuaskType::keyshadow);
    std::string const shadows = printClients(QuaskType::shadow);
    std::string const writers = printClients(QuaskType::writer);
    return title + "Writer: " + writers + "\nShadow: " + shadows + "\nKeyshadow: " + keyshadows +
           "\nReader: " + readers + "\n\n";
}

}  // namespace Quask::Model
