// Which table files a process has mapped: its /proc/PID/maps.

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/debug_handler.h"
#include "clients/maps_file.h"
#include "clients/quask_client_scanner.h"
#include "clients/require.h"
#include "clients/tokens.h"

namespace Quask {
namespace {

using Dovan::trace;
using Dovan::Platform::DebugHandler;

// The files whose mappings say something about a client.
constexpr std::array<std::string_view, 3> fileTypes{"slots", "vandral.1", "orvik"};

bool isFileType(std::string_view fileName)
{
    return std::ranges::find(fileTypes, fileName) != fileTypes.end();
}

// A line's tokens: 1 address range, 2 permissions, 3 offset, 4 device, 5 inode, 6 path. A path ends
// at its first space; anything after that, as the " (deleted)" that the kernel appends, is ignored.
std::string_view permissionsOf(std::string_view line)
{
    return nthToken(line, 2, " ");
}

std::string_view pathOf(std::string_view line)
{
    return nthToken(line, 6, " ");
}

// False only for a line whose path cannot be that of a counted file, found without taking the line
// apart: this decides for nearly all lines, and must cost next to nothing compared with reading.
bool mayCount(std::string_view line)
{
    std::size_t const slash = line.find('/');
    if (slash == std::string_view::npos) {
        return false;
    }
    // Without a space after its first slash, the line can only have slashes in its last token.
    std::string_view const rest = line.substr(slash);
    return rest.find(' ') != std::string_view::npos || isFileType(afterLastSlash(rest));
}

// Calls add(directory, info) for every mapping, in the order of the lines, of a counted file that
// lies in a directory for which isWanted(directory) holds. `directory` is valid for the call only.
template <typename IsWanted, typename Add>
void forEachMapping(DebugHandler& handler, String const& mapsPath, MapsFile& maps,
                    IsWanted isWanted, Add add)
{
    std::string_view line;
    do {
        if (!maps.nextLine(line)) {
            return;
        }
    } while (line.empty());
    // The first line only names the process: it is not counted even if it maps a table file.
    std::string_view const executable = pathOf(line);
    if (executable.empty()) {
        trace(handler, 5, "Ignoring file ", mapsPath, " with empty proc name");
        return;
    }
    std::string const procName(afterLastSlash(executable));
    trace(handler, 9, "procName: ", procName);

    bool const tracesEveryLine = handler.isEnabled(9);
    while (maps.nextLine(line)) {
        if (!tracesEveryLine && !mayCount(line)) {
            continue;
        }
        std::string_view const region = pathOf(line);
        if (region.empty()) {
            continue;
        }
        trace(handler, 9, "mmapRegion: ", region);
        std::size_t const slash = region.rfind('/');
        if (slash == std::string_view::npos) {
            continue;
        }
        std::string_view const directory = region.substr(0, slash);
        std::string_view const fileType = region.substr(slash + 1);
        if (!isFileType(fileType) || !isWanted(directory)) {
            continue;
        }
        trace(handler, 9, "quaskFileType: ", fileType);
        std::string_view const permissions = permissionsOf(line);
        require(!permissions.empty(), "!permissions.empty()");
        std::string info;
        for (std::string_view const field :
             {nthToken(mapsPath, 2, "/"), std::string_view(procName), permissions, fileType}) {
            info.append(field).append(" ");
        }
        add(directory, info);
    }
}

}  // namespace

String QuaskClientScanner::getToken(String const& line, unsigned index,
                                    String const& delimiters) const
{
    return String(nthToken(line, index, delimiters));
}

std::vector<std::string> QuaskClientScanner::extractMmapInfo(String const& rootPath) const
{
    trace(*handler, 5, "Extracting mmap info for rootpath: ", rootPath, " traversing /proc");
    std::vector<std::string> infoList;
    forEachMapsFile([&](String const& mapsPath, MapsFile& maps) {
        extractMmapInfo(rootPath, mapsPath, maps, infoList);
    });
    return infoList;
}

void QuaskClientScanner::extractMmapInfo(String const& rootPath, String const& mapsPath,
                                         std::vector<std::string>& infoList) const
{
    MapsFile maps;
    maps.open(mapsPath);
    extractMmapInfo(rootPath, mapsPath, maps, infoList);
}

void QuaskClientScanner::extractMmapInfo(String const& rootPath, String const& mapsPath,
                                         MapsFile& maps, std::vector<std::string>& infoList) const
{
    trace(*handler, 5, "Extracting mmap info for rootpath: ", rootPath, ", filePath: ", mapsPath);
    forEachMapping(
        *handler, mapsPath, maps, [&](std::string_view directory) { return directory == rootPath; },
        [&](std::string_view /*directory*/, std::string const& info) {
            infoList.push_back(info);
            trace(*handler, 5, "Added: ", info);
        });
    if (maps.error() != 0) {
        noteFailure(mapsPath, maps.error());
    }
}

QuaskClientScanner::TableToInfoMap QuaskClientScanner::extractMmapInfoByTable(
    String const& rootPath) const
{
    trace(*handler, 5, "Extracting mmap info by table for rootpath: ", rootPath,
          " traversing /proc");
    TableToInfoMap infoByTable;
    forEachMapsFile([&](String const& mapsPath, MapsFile& maps) {
        extractMmapInfoByTable(rootPath, mapsPath, maps, infoByTable);
    });
    return infoByTable;
}

void QuaskClientScanner::extractMmapInfoByTable(String const& rootPath, String const& mapsPath,
                                                TableToInfoMap& infoByTable) const
{
    MapsFile maps;
    maps.open(mapsPath);
    extractMmapInfoByTable(rootPath, mapsPath, maps, infoByTable);
}

void QuaskClientScanner::extractMmapInfoByTable(String const& rootPath, String const& mapsPath,
                                                MapsFile& maps, TableToInfoMap& infoByTable) const
{
    trace(*handler, 5, "Extracting mmap info by table for rootpath: ", rootPath,
          ", filePath: ", mapsPath);
    std::string table;  // kept from mapping to mapping: a path may be long
    forEachMapping(
        *handler, mapsPath, maps, [](std::string_view /*directory*/) { return true; },
        [&](std::string_view directory, std::string const& info) {
            table.assign(directory);
            addToQuaskClientMap(infoByTable, table, info);
        });
    if (maps.error() != 0) {
        noteFailure(mapsPath, maps.error());
    }
}

void QuaskClientScanner::addToQuaskClientMap(TableToInfoMap& infoByTable, std::string const& table,
                                             std::string const& info) const
{
    auto const [entry, isNew] = infoByTable.try_emplace(table);
    std::vector<std::string>& infoList = entry->second;
    infoList.push_back(info);
    if (isNew) {
        trace(*handler, 5, "Added new entry: tableName: ", table, ", info: ", info,
              ", infoList.size: ", infoList.size());
    } else {
        trace(*handler, 9, "Added to existing entry: tableName: ", table, ", info: ", info,
              ", infoList.size: ", infoList.size());
    }
}

}  // namespace Quask
