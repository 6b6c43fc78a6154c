#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "clients/client_model.h"
#include "finder/dir_node.h"
#include "report/quask_scanner_base.h"

namespace Quask {

class MapsFile;

using String = std::string;

// Finds the processes that have table files mapped, from the lists of mappings under /proc, and
// sorts them into roles. One thread at a time.
//
// An mmap info string is the record of one mapping of a file that tells something about a client:
// process id, process name, permissions and file type ("slots", "vandral.1" or "orvik"), each
// followed by a blank, as in "4711 feeder rw-s slots ".
class QuaskClientScanner : public QuaskScannerBase
{
public:
    using QuaskClientList = std::vector<Model::QuaskClient>;

    // The directory of a table's files, as it is mapped, to the table's mmap info strings in the
    // order in which they were found.
    using TableToInfoMap = std::map<std::string, std::vector<std::string>>;

    using QuaskScannerBase::QuaskScannerBase;

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
    // read of it.
    void extractMmapInfo(String const& rootPath, String const& mapsPath,
                         std::vector<std::string>& infoList) const;

    // The mmap info strings of all processes for all tables, wherever they lie: `rootPath` is for
    // the diagnostics only. Throws Dovan::RuntimeException when /proc cannot be read.
    TableToInfoMap extractMmapInfoByTable(String const& rootPath) const;

    // Adds those of one process.
    void extractMmapInfoByTable(String const& rootPath, String const& mapsPath,
                                TableToInfoMap& infoByTable) const;

    // Appends `info` to the table's list, which is made if there is none.
    void addToQuaskClientMap(TableToInfoMap& infoByTable, std::string const& table,
                             std::string const& info) const;

    // Sorting one table's clients into roles.

    // Appends the client of one mmap info string to the list that the mapping speaks for, if to
    // any. True on failure: the string is not one of the above.
    bool categorizeClient(std::string const& info, QuaskClientList& writers,
                          QuaskClientList& keyShadowReaders, QuaskClientList& shadowAndKeyShadow,
                          QuaskClientList& allReaders) const;

    // Puts what is in `minuend` and not in `subtrahend` in front of `result`, in order; when either
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
                              std::map<int, std::string>& commands) const;
    void doPopulateCommandNames(QuaskClientList& clients,
                                std::map<int, std::string>& commands) const;

private:
    // As their namesakes, with a file to read that is open unless it cannot be opened.
    bool readNextMmap(DirNode& proc, std::string& mapsPath, MapsFile& maps) const;
    void extractMmapInfo(String const& rootPath, String const& mapsPath, MapsFile& maps,
                         std::vector<std::string>& infoList) const;
    void extractMmapInfoByTable(String const& rootPath, String const& mapsPath, MapsFile& maps,
                                TableToInfoMap& infoByTable) const;

    // Calls `visit` with the path of every maps file under /proc and with the file, likewise.
    void forEachMapsFile(std::function<void(String const&, MapsFile&)> const& visit) const;
};

}  // namespace Quask
