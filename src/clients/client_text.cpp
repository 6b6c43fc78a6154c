// The text of the client reports.

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>

#include "clients/client_model.h"

namespace Quask::Model {
namespace {

using ClientList = QuaskTable::ClientList;

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

// Null, with a line on standard error, when the role has no list.
ClientList const* listOf(QuaskTable const& table, QuaskType type)
{
    auto const role = table.clients.find(type);
    if (role == table.clients.end()) {
        std::cerr << "Error getting clients of type " << word(type) << std::endl;
        return nullptr;
    }
    return &role->second;
}

// Appends the clients to `text`. With `out`, whatever has become long is printed there and removed
// from `text`.
void appendClients(ClientList const* clients, std::string& text, std::ostream* out = nullptr)
{
    constexpr std::size_t longEnough = std::size_t{64} * 1024;
    if (clients == nullptr || clients->empty()) {
        text += "None";
        return;
    }
    for (QuaskClient const& client : *clients) {
        text.append(client.command.text()).append("-").append(std::to_string(client.pid));
        text.append("(").append(client.procName.text()).append(") ");
        if (out != nullptr && text.size() >= longEnough) {
            *out << text;
            text.clear();
        }
    }
}

}  // namespace

std::string HeaderInfo::print() const
{
    return "Capacity: slots:" + figure(slots) + " buckets:" + figure(buckets) +
           " primary_notifications:" + figure(primaryNotifications) +
           " secondary_notifications:" + figure(secondaryNotifications) + "\n" +
           "Occupied slots: " + figure(occupiedSlots) + "\n";
}

std::string QuaskTable::printClients(QuaskType const& type) const
{
    std::string text;
    appendClients(listOf(*this, type), text);
    return text;
}

std::string QuaskTable::print() const
{
    std::ostringstream text;
    print(text);
    return std::move(text).str();
}

// A section that is not long is printed with one call, so that the standard output never tears it.
void QuaskTable::print(std::ostream& out) const
{
    std::string text = "Quask table \"" + name + "\"\n" + headerInfo.print();
    if (hasClients()) {
        // The order in which roles without a list are reported.
        ClientList const* const readers = listOf(*this, QuaskType::reader);
        ClientList const* const keyshadows = listOf(*this, QuaskType::keyshadow);
        ClientList const* const shadows = listOf(*this, QuaskType::shadow);
        ClientList const* const writers = listOf(*this, QuaskType::writer);
        appendClients(writers, text += "Writer: ", &out);
        appendClients(shadows, text += "\nShadow: ", &out);
        appendClients(keyshadows, text += "\nKeyshadow: ", &out);
        appendClients(readers, text += "\nReader: ", &out);
    } else {
        text += "Clients: None";
    }
    out << (text += "\n\n");
}

}  // namespace Quask::Model
