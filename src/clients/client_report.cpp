// The two client reports: of one table, and of all tables.

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <unistd.h>

#include "base/debug_handler.h"
#include "clients/client_model.h"
#include "clients/header_figures.h"
#include "clients/quask_client_scanner.h"
#include "finder/table_finder.h"
#include "support/root_path.h"
#include "table/quask_reader_generic.h"
#include "table/vandral_reader_generic.h"

namespace Quask {
namespace {

using Dovan::trace;
using Model::HeaderInfo;
using Model::QuaskTable;

// Without root, the processes of other users cannot be looked into and are missing from the report.
void warnUnlessRoot()
{
    if (std::getenv("J5_CHROOT") == nullptr && getuid() != 0) {
        std::cout << "You should run this command as root." << std::endl;
    }
}

bool isComplete(HeaderInfo const& info)
{
    for (std::uint32_t const figure :
         {info.buckets, info.primaryNotifications, info.secondaryNotifications, info.slots,
          info.occupiedSlots}) {
        if (figure == HeaderInfo::notAvailable) {
            return false;
        }
    }
    return true;
}

}  // namespace

QuaskClientScanner::~QuaskClientScanner() = default;

void QuaskClientScanner::getHeaderInfo(std::string const& table, QuaskTable& model) const
{
    QuaskReaderGeneric reader(table);
    std::unique_ptr<Dovan::Platform::DebugHandler> const channel(
        Dovan::Platform::getDebugHandler("Quask-" + table));
    RootPath const rootPath(*channel, table, false);
    VandralReaderGeneric vandral(*channel, rootPath);
    QuaskTest::populateQuaskTableHeaderInfo(reader, vandral, model);
}

bool QuaskClientScanner::assignClients(std::string const& tablePath,
                                       std::vector<std::string> const& infoList,
                                       std::map<int, std::string>& commands,
                                       QuaskTable& table) const
{
    QuaskClientList writers;
    QuaskClientList keyShadowReaders;
    QuaskClientList shadowAndKeyShadow;
    QuaskClientList allReaders;
    for (std::string const& info : infoList) {
        trace(*handler, 5, info);
        if (categorizeClient(info, writers, keyShadowReaders, shadowAndKeyShadow, allReaders)) {
            return true;
        }
    }
    QuaskClientList shadowReaders;
    QuaskClientList passiveReaders;
    determineReaders(keyShadowReaders, shadowAndKeyShadow, allReaders, shadowReaders,
                     passiveReaders);
    populateCommandNames(writers, shadowReaders, keyShadowReaders, passiveReaders, commands);
    table = QuaskTable(tablePath, writers, shadowReaders, keyShadowReaders, passiveReaders);
    return false;
}

bool QuaskClientScanner::getClients(std::string const& rootPath, QuaskTable& table) const
{
    std::map<int, std::string> commands;
    if (assignClients(rootPath, extractMmapInfo(rootPath), commands, table)) {
        return true;
    }
    getHeaderInfo(tableNameText(), table);
    return false;
}

bool QuaskClientScanner::getAllClients(std::string const& rootPath,
                                       std::set<QuaskTable>& tables) const
{
    std::map<int, std::string> commands;
    for (auto const& [path, infoList] : extractMmapInfoByTable(rootPath)) {
        trace(*handler, 5, "Analyzing quask ", path, " with mmapInfo.size: ", infoList.size());
        QuaskTable table;
        if (assignClients(path, infoList, commands, table)) {
            return true;
        }
        // A table outside the root directory loses as many characters of its path.
        getHeaderInfo(path.substr(rootPath.size() + 1), table);
        tables.insert(table);
    }
    return false;
}

bool QuaskClientScanner::addClientlessQuasks(std::string const& rootPath,
                                             std::set<QuaskTable>& tables) const
{
    TableFinder finder;
    if (!finder.find("")) {
        std::cerr << "Error searching for tables" << std::endl;
        return true;
    }
    trace(*handler, 9, "Determining clientless quasks");
    for (std::string const& name : finder) {
        trace(*handler, 9, "Looking for ", name, " in tables");
        // By the bare name on purpose. It finds no table that has clients, since those are named by
        // their paths: that they are kept, and not added a second time, is the insertion's doing.
        if (tables.contains(QuaskTable(name))) {
            continue;
        }
        QuaskTable table(rootPath + "/" + name);
        getHeaderInfo(name, table);
        if (isComplete(table.headerInfo)) {
            tables.insert(table);
        } else {
            trace(*handler, 5, "Suppressing clientless quask ", name, " with missing header info");
        }
    }
    return false;
}

int QuaskClientScanner::doGetClientInfo()
{
    warnUnlessRoot();
    RootPath const rootPath(*handler, tableNameText(), false);
    QuaskTable table;
    if (getClients(rootPath.directory(), table)) {
        std::cerr << "Error getting clients of Quask " << tableNameText() << std::endl;
        return 1;
    }
    *out << table.print();
    closeOutput();
    return 0;
}

int QuaskClientScanner::doGetAllClientInfo()
{
    warnUnlessRoot();
    RootPath const rootPath(*handler, "", false);
    std::set<QuaskTable> tables;
    if (getAllClients(rootPath.directory(), tables)) {
        std::cerr << "Error getting readers and writers of Quask" << std::endl;
        return 1;
    }
    if (addClientlessQuasks(rootPath.directory(), tables)) {
        std::cerr << "Error adding clientless Quasks" << std::endl;
        return 1;
    }
    if (tables.empty()) {
        *out << "No Quasks" << std::endl;
    }
    for (QuaskTable const& table : tables) {
        *out << table.print();
    }
    closeOutput();
    return 0;
}

}  // namespace Quask
