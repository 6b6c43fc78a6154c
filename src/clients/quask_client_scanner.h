#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "clients/client_model.h"
#include "finder/dir_node.h"
#include "report/quask_scanner_base.h"

namespace Quask {

class MapsFile;

using String = std::string;

// Prints a line when the user is not root and the environment lacks J5_CHROOT: the processes of
// other users cannot be looked into then, and are missing from what is found.
void warnUnlessRoot(std::ostream& out);

// Finds the processes that have table files mapped, from the lists of mappings under /proc, sorts
// them into roles, and prints the client reports. One thread at a time.
//
// An mmap info string is the record of one mapping of a file that says something about a client:
// process id, process name, permissions and file type ("slots", "vandral.1" or "orvik"), each
// followed by a space, as in "4711 feeder rw-s slots ".
class QuaskClientScanner : public QuaskScannerBase
{
public:
    using QuaskClientList = std::vector<Model::QuaskClient>;

    // The directory of a table's files, as it is mapped, to the table's mmap info strings in the
    // order in which they were found.
    using TableToInfoMap = std::map<std::string, std::vector<std::string>>;

    // The commands of processes by their pids. A command may be 100 kB long and is there once,
    // however many clients have it.
    using CommandCache = std::map<int, Model::SharedText>;

    using QuaskScannerBase::QuaskScannerBase;
    ~QuaskClientScanner() override;

    // The reports. Both warn on standard output, wherever the report goes: see warnUnlessRoot(). 0,
    // or 1 with a line on standard error and nothing printed. Precondition: initialize() or, for
    // the report on all tables, an output chosen otherwise. Throws as extractMmapInfo() does.

    // Prints the scanner's table: its header figures and its clients by their roles.
    int doGetClientInfo();

    // Prints every table that a process has mapped and every other table below the root directory
    // whose header figures can all be read, ordered by path; "No Quasks" when there is none. Throws
    // std::out_of_range when a process has mapped a file that is called like a table's, in a
    // directory whose path is not longer than the root directory's.
    int doGetAllClientInfo();

    // Reading the processes' mappings. Throughout, `rootPath` is a directory without a slash at its
    // end and `mapsPath` the path of one maps file, DIRECTORY/PID/maps.

    // The `index`-th token of `line`, counted from 1, tokens being separated by runs of the
    // characters in `delimiters`; empty when there are fewer, and for index 0.
    String getToken(String const& line, unsigned index, String const& delimiters) const;

    // Advances `proc` to the next entry with a maps file below it and sets `mapsPath` to its path;
    // false at the end. Throws Dovan::RuntimeException when the directory cannot be read.
    bool readNextMmap(DirNode& proc, std::string& mapsPath) const;

    // The mmap info strings, of all processes, for the table whose directory is `rootPath`. Throws
    // Dovan::RuntimeException when /proc cannot be read.
    std::vector<std::string> extractMmapInfo(String const& rootPath) const;

    // Appends those of one process. A file that cannot be opened or read to its end gives what was
    // read of it, and counts as a process that could not be looked into unless it has ended.
    void extractMmapInfo(String const& rootPath, String const& mapsPath,
                         std::vector<std::string>& infoList) const;

    // The mmap info strings of all processes for all tables, in any directory: `rootPath` is for
    // the diagnostics only. Throws Dovan::RuntimeException when /proc cannot be read.
    TableToInfoMap extractMmapInfoByTable(String const& rootPath) const;

    // Adds those of one process.
    void extractMmapInfoByTable(String const& rootPath, String const& mapsPath,
                                TableToInfoMap& infoByTable) const;

    // Calls `visit` with the path of each process's maps file and each of its lines, which is valid
    // during the call: /proc/PID/maps, and also that of /proc/self. Throws Dovan::RuntimeException
    // when /proc cannot be read.
    void forEachMapsLine(
        std::function<void(String const& mapsPath, std::string_view line)> const& visit) const;

    // How many processes the last extraction of all processes could not look into, or not to the
    // end: clients may be missing. Those that /proc does not show are not known.
    std::size_t unreadProcesses() const { return unreadProcesses_; }

    // Appends `info` to the table's list, which is made if there is none.
    void addToQuaskClientMap(TableToInfoMap& infoByTable, std::string const& table,
                             std::string const& info) const;

    // Sorting one table's clients into roles.

    // Appends the client of one mmap info string to the list that the mapping speaks for, if to
    // any. True on failure: the string is not one of the above.
    bool categorizeClient(std::string const& info, QuaskClientList& writers,
                          QuaskClientList& keyShadowReaders, QuaskClientList& shadowAndKeyShadow,
                          QuaskClientList& allReaders) const;

    // Puts what is in `minuend` and not in `subtrahend` before `result`, in order; when either
    // is empty, `result` becomes `minuend`. An element of `subtrahend` takes away one equal
    // element. Sorts the first two.
    void computeSetDifference(QuaskClientList& minuend, QuaskClientList& subtrahend,
                              QuaskClientList& result) const;

    // Separates the readers: fills the last two lists, empty on entry, from the first three, which
    // may be sorted.
    void determineReaders(QuaskClientList& keyShadowReaders, QuaskClientList& shadowAndKeyShadow,
                          QuaskClientList& allReaders, QuaskClientList& shadowReaders,
                          QuaskClientList& passiveReaders) const;

    // Sets the command of every client. `commands` holds the commands known by their pids; a pid it
    // lacks has its command line read and is added.
    void populateCommandNames(QuaskClientList& writers, QuaskClientList& shadowReaders,
                              QuaskClientList& keyShadowReaders, QuaskClientList& readers,
                              CommandCache& commands) const;
    void doPopulateCommandNames(QuaskClientList& clients, CommandCache& commands) const;

    // Building the models that the reports print.

    // The models of the two reports. True on failure, with the report's lines on standard error.
    // Throw as extractMmapInfo() does, and as doGetAllClientInfo().
    bool lookUpTable(Model::QuaskTable& table) const;
    bool lookUpAllTables(std::set<Model::QuaskTable>& tables) const;

    // Their steps. `table` is a path below the root directory, and `rootPath` the directory of the
    // one table or of all.

    // Sets the header figures of `model`, those of files that cannot be attached to not available.
    void getHeaderInfo(std::string const& table, Model::QuaskTable& model) const;

    // Sets `table` to the table of `rootPath`, which is the scanner's. True on failure, and `table`
    // is as it was.
    bool getClients(std::string const& rootPath, Model::QuaskTable& table) const;

    // Adds the tables that processes have mapped; one whose name is there already is dropped. True
    // on failure; those added before stay.
    bool getAllClients(std::string const& rootPath, std::set<Model::QuaskTable>& tables) const;

    // Adds the other tables that are below the root directory and whose header figures are all
    // available. True on failure, with a line on standard error.
    bool addClientlessQuasks(std::string const& rootPath,
                             std::set<Model::QuaskTable>& tables) const;

private:
    // Sets `table` to a table of this name and the clients of these mmap info strings. True on
    // failure, and `table` is as it was.
    bool assignClients(std::string tablePath, std::vector<std::string> const& infoList,
                       CommandCache& commands, Model::QuaskTable& table) const;

    // As their namesakes, with a file to read that is open unless it cannot be opened.
    bool readNextMmap(DirNode& proc, std::string& mapsPath, MapsFile& maps) const;
    void extractMmapInfo(String const& rootPath, String const& mapsPath, MapsFile& maps,
                         std::vector<std::string>& infoList) const;
    void extractMmapInfoByTable(String const& rootPath, String const& mapsPath, MapsFile& maps,
                                TableToInfoMap& infoByTable) const;

    // Calls `visit` with the path of every maps file under /proc and with the file, likewise.
    void forEachMapsFile(std::function<void(String const&, MapsFile&)> const& visit) const;

    // Traces why a maps file was not read to its end, and counts the process unless it has ended.
    void noteFailure(String const& mapsPath, int error) const;

    // Counts while the processes are gone through, which changes nothing else here.
    mutable std::size_t unreadProcesses_ = 0;
};

}  // namespace Quask
