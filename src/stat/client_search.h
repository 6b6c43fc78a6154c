#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <sys/types.h>

#include "clients/quask_client_scanner.h"
#include "stat/client_mapping.h"
#include "stat/file_identity.h"
#include "stat/table_look.h"

namespace Quask::Stat {

// Finds out which processes have files of these tables mapped, in one pass over /proc. A file is
// known by its device and inode: a process in another mount namespace that has the same file is a
// client under whatever name it knows it, and one that has another file of the same name is not.
// One pass an object; one thread.
class ClientSearch
{
public:
    // `tables` have their names and figures; run() adds to them, and it must outlive the object.
    // `isWanted` says of a table that has been removed whether it is to be added when a process
    // still holds files of it.
    ClientSearch(std::vector<TableLook>& tables,
                 std::function<bool(std::string const& name)> isWanted);

    // How many processes could not be looked into: clients may be missing. Throws
    // Dovan::RuntimeException when /proc cannot be read.
    std::size_t run();

private:
    // What a process has mapped of one table's files, or of those that were there before.
    struct Holding
    {
        bool writesVandral = false;
        bool readsVandral = false;
        bool readsSlots = false;
        bool readsOrvik = false;
    };

    struct HeldTable
    {
        std::size_t table;  // its index
        bool isStale;
        bool operator==(HeldTable const&) const = default;
    };

    struct HeldTableHash
    {
        std::size_t operator()(HeldTable const& held) const
        {
            return held.table * 2 + (held.isStale ? 1 : 0);
        }
    };

    static Role roleOf(Holding const& holding);

    void examine(std::string_view mapsPath, std::string_view line);
    void addClients();
    void setCommands();
    void lookForOwner(TableLook& table);

    // Whose removed file the mapping is of; adds the table if need be. Null when it is nobody's.
    std::size_t const* removedTableOf(ClientMapping const& mapping);

    std::vector<TableLook>& tables_;
    std::function<bool(std::string const& name)> const isWanted_;
    QuaskClientScanner const scanner_;
    std::unordered_map<FileIdentity, std::size_t, FileIdentityHash> tableOfFile_;
    std::unordered_map<std::string, std::size_t> tableOfDirectory_;
    dev_t rootDevice_ = 0;

    pid_t pid_ = 0;  // the process that is being looked into, and what it holds
    std::unordered_map<HeldTable, Holding, HeldTableHash> held_;
    QuaskClientScanner::CommandCache commands_;
};

}  // namespace Quask::Stat
