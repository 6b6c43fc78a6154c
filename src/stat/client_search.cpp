#include "stat/client_search.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstdint>
#include <utility>

#include <sys/stat.h>

#include "clients/maps_file.h"
#include "clients/tokens.h"
#include "stat/process_stat.h"
#include "support/root_path.h"

namespace Quask::Stat {
namespace {

// 0 for what is no process, as /proc/self.
pid_t processOf(std::string_view mapsPath)
{
    std::string_view const name = nthToken(mapsPath, 2, "/");
    pid_t pid = 0;
    auto const [rest, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
    return error == std::errc() && rest == name.data() + name.size() ? pid : 0;
}

// Whether it has ended and its parent has not yet been told.
bool isZombie(pid_t pid)
{
    std::string const fields = processStatFields(pid);
    return fields.starts_with('Z') || fields.starts_with('X');
}

bool canBeLookedInto(pid_t pid)
{
    MapsFile maps;
    std::string_view line;
    if (!maps.open("/proc/" + std::to_string(pid) + "/maps")) {
        return false;
    }
    maps.nextLine(line);
    return maps.error() == 0;
}

}  // namespace

ClientSearch::ClientSearch(std::vector<TableLook>& tables,
                           std::function<bool(std::string const& name)> isWanted)
    : tables_(tables), isWanted_(std::move(isWanted)), scanner_("", nullptr)
{
    struct stat status = {};
    if (stat(rootDirectory().c_str(), &status) == 0) {
        rootDevice_ = status.st_dev;
    }
    for (std::size_t i = 0; i < tables.size(); ++i) {
        tableOfDirectory_.emplace(rootDirectory() + "/" + tables[i].name, i);
        for (auto const& file : tables[i].figures.files) {
            if (file) {
                tableOfFile_.emplace(*file, i);
            }
        }
    }
}

std::size_t ClientSearch::run()
{
    scanner_.forEachMapsLine(
        [this](std::string const& mapsPath, std::string_view line) { examine(mapsPath, line); });
    addClients();
    for (TableLook& table : tables_) {
        std::ranges::sort(table.clients.clients, {}, [](Client const& client) {
            return std::pair(client.pid, client.isStale);
        });
        lookForOwner(table);
    }
    setCommands();
    return scanner_.unreadProcesses();
}

void ClientSearch::examine(std::string_view mapsPath, std::string_view line)
{
    std::optional const mapping = readClientMapping(line);
    if (!mapping) {
        return;
    }
    pid_t const pid = processOf(mapsPath);
    if (pid != pid_) {
        addClients();
        pid_ = pid;
    }
    auto const known = tableOfFile_.find(mapping->identity);
    bool const isStale = known == tableOfFile_.end();
    std::size_t const* const table = isStale ? removedTableOf(*mapping) : &known->second;
    if (pid == 0 || table == nullptr) {
        return;
    }
    Holding& holding = held_[{*table, isStale}];
    switch (mapping->file) {
        case ClientFile::slots:
            holding.readsSlots |= mapping->canRead;
            break;
        case ClientFile::vandral1:
            holding.writesVandral |= mapping->canWrite;
            holding.readsVandral |= mapping->canRead;
            break;
        case ClientFile::orvik:
            holding.readsOrvik |= mapping->canRead;
            break;
    }
}

std::size_t const* ClientSearch::removedTableOf(ClientMapping const& mapping)
{
    std::string const& root = rootDirectory();
    if (!mapping.isRemoved || mapping.directory.size() < root.size() + 2 ||
        !mapping.directory.starts_with(root) || mapping.directory[root.size()] != '/') {
        return nullptr;
    }
    auto const known = tableOfDirectory_.find(mapping.directory);
    if (known != tableOfDirectory_.end()) {
        TableLook const& table = tables_[known->second];
        auto const isOnItsDevice = [&mapping](std::optional<FileIdentity> const& file) {
            return file && file->device == mapping.identity.device;
        };
        // A file on another device belongs to a table of the same name in another mount namespace.
        return table.isRemoved || std::ranges::any_of(table.figures.files, isOnItsDevice)
                   ? &known->second
                   : nullptr;
    }
    std::string name = mapping.directory.substr(root.size() + 1);
    if (mapping.identity.device != rootDevice_ || !isWanted_(name)) {
        return nullptr;
    }
    tables_.push_back({.name = std::move(name), .isRemoved = true, .figures = {}, .clients = {}});
    return &tableOfDirectory_.emplace(mapping.directory, tables_.size() - 1).first->second;
}

Role ClientSearch::roleOf(Holding const& holding)
{
    return holding.writesVandral  ? Role::writer
           : holding.readsOrvik   ? Role::keyshadow
           : holding.readsVandral ? Role::shadow
           : holding.readsSlots   ? Role::reader
                                  : Role::none;
}

void ClientSearch::addClients()
{
    for (auto const& [held, holding] : held_) {
        tables_[held.table].clients.clients.push_back(
            {.pid = pid_, .role = roleOf(holding), .isStale = held.isStale, .command = {}});
    }
    held_.clear();
}

void ClientSearch::setCommands()
{
    auto const commandOf = [this](pid_t pid) {
        QuaskClientScanner::QuaskClientList clients{{pid, {}, {}}};
        scanner_.doPopulateCommandNames(clients, commands_);
        return clients.front().command;
    };
    for (TableLook& table : tables_) {
        for (Client& client : table.clients.clients) {
            client.command = commandOf(client.pid);
        }
        if (table.clients.owner == OwnerProcess::unknown) {
            table.clients.ownerCommand =
                commandOf(static_cast<pid_t>(table.figures.main->buckets.ownerPid));
        }
    }
}

void ClientSearch::lookForOwner(TableLook& table)
{
    if (!table.figures.main || table.figures.main->buckets.ownerPid == 0 ||
        table.clients.count(Role::writer) > 0) {
        return;
    }
    std::uint32_t const number = table.figures.main->buckets.ownerPid;
    auto const pid = static_cast<pid_t>(number);
    bool const isGone = number > INT_MAX || (kill(pid, 0) != 0 && errno == ESRCH) || isZombie(pid);
    table.clients.owner = isGone                 ? OwnerProcess::gone
                          : canBeLookedInto(pid) ? OwnerProcess::notWriter
                                                 : OwnerProcess::unknown;
}

}  // namespace Quask::Stat
