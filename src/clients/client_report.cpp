// The two client reports: of one table, and of all tables.

#include <cstdlib>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <utility>
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

using Dovan::trace;
using Model::QuaskTable;

void warnUnlessRoot(std::ostream& out)
{
    if (std::getenv("J5_CHROOT") == nullptr && getuid() != 0) {
        out << "You should run this command as root." << std::endl;
    }
}

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

bool QuaskClientScanner::assignClients(std::string tablePath,
                                       std::vector<std::string> const& infoList,
                                       CommandCache& commands, QuaskTable& table) const
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
    table =
        QuaskTable(std::move(tablePath), writers, shadowReaders, keyShadowReaders, passiveReaders);
    return false;
}

bool QuaskClientScanner::getClients(std::string const& rootPath, QuaskTable& table) const
{
    CommandCache commands;
    if (assignClients(rootPath, extractMmapInfo(rootPath), commands, table)) {
        return true;
    }
    getHeaderInfo(tableNameText(), table);
    return false;
}

bool QuaskClientScanner::getAllClients(std::string const& rootPath,
                                       std::set<QuaskTable>& tables) const
{
    CommandCache commands;
    // Each path is there once: the map gives it to the table. It may be much longer than PATH_MAX.
    TableToInfoMap infoByTable = extractMmapInfoByTable(rootPath);
    while (!infoByTable.empty()) {
        auto entry = infoByTable.extract(infoByTable.begin());
        std::vector<std::string> const& infoList = entry.mapped();
        trace(*handler, 5, "Analyzing quask ", entry.key(),
              " with mmapInfo.size: ", infoList.size());
        QuaskTable table;
        if (assignClients(std::move(entry.key()), infoList, commands, table)) {
            return true;
        }
        // A table outside the root directory loses as many characters of its path.
        getHeaderInfo(table.name.substr(rootPath.size() + 1), table);
        tables.insert(std::move(table));
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
        if (table.headerInfo.isComplete()) {
            tables.insert(std::move(table));
        } else {
            trace(*handler, 5, "Suppressing clientless quask ", name, " with missing header info");
        }
    }
    return false;
}

bool QuaskClientScanner::lookUpTable(QuaskTable& table) const
{
    RootPath const rootPath(*handler, tableNameText(), false);
    if (getClients(rootPath.directory(), table)) {
        std::cerr << "Error getting clients of Quask " << tableNameText() << std::endl;
        return true;
    }
    return false;
}

bool QuaskClientScanner::lookUpAllTables(std::set<QuaskTable>& tables) const
{
    RootPath const rootPath(*handler, "", false);
    if (getAllClients(rootPath.directory(), tables)) {
        std::cerr << "Error getting readers and writers of Quask" << std::endl;
        return true;
    }
    if (addClientlessQuasks(rootPath.directory(), tables)) {
        std::cerr << "Error adding clientless Quasks" << std::endl;
        return true;
    }
    return false;
}

int QuaskClientScanner::doGetClientInfo()
{
    warnUnlessRoot(std::cout);
    QuaskTable table;
    if (lookUpTable(table)) {
        return 1;
    }
    table.print(*out);
    closeOutput();
    return 0;
}

int QuaskClientScanner::doGetAllClientInfo()
{
    warnUnlessRoot(std::cout);
    std::set<QuaskTable> tables;
    if (lookUpAllTables(tables)) {
        return 1;
    }
    if (tables.empty()) {
        *out << "No Quasks" << std::endl;
    }
    for (QuaskTable const& table : tables) {
        table.print(*out);
    }
    closeOutput();
    return 0;
}

}  // namespace Quask
