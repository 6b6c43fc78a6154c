// The processes of /proc, and those that cannot be looked into.

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>

#include <dirent.h>
#include <sys/stat.h>

#include "base/debug_handler.h"
#include "base/exception.h"
#include "clients/maps_file.h"
#include "clients/quask_client_scanner.h"
#include "finder/dir_node.h"

namespace Quask {
namespace {

using Dovan::trace;

// 0 when there is a file of this path, else the errno.
int examine(std::string const& path)
{
    struct stat ignored = {};
    return stat(path.c_str(), &ignored) == 0 ? 0 : errno;
}

// Whether this errno says that a process has ended.
bool isGone(int error)
{
    return error == ENOENT || error == ESRCH;
}

// Whether a directory entry of this name is a process's.
bool isProcess(std::string_view name)
{
    return std::ranges::all_of(name, [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

bool QuaskClientScanner::readNextMmap(DirNode& proc, std::string& mapsPath) const
{
    MapsFile maps;
    return readNextMmap(proc, mapsPath, maps);
}

// To open a file proves that it is there, which spares every process a call: only what cannot be
// opened is looked for.
bool QuaskClientScanner::readNextMmap(DirNode& proc, std::string& mapsPath, MapsFile& maps) const
{
    while (dirent const* const entry = proc.readEntry()) {
        mapsPath.assign(proc.path()).append("/").append(entry->d_name).append("/maps");
        if (maps.open(mapsPath)) {
            return true;
        }
        int const error = examine(mapsPath);
        if (error == 0) {
            return true;
        }
        // Where /proc is mounted with hidepid=1, even to look for the file is forbidden.
        if (isProcess(entry->d_name) && !isGone(error)) {
            noteFailure(mapsPath, error);
        }
    }
    return false;
}

void QuaskClientScanner::noteFailure(String const& mapsPath, int error) const
{
    if (isGone(error)) {
        trace(*handler, 5, "file ", mapsPath, " no longer exists");
        return;
    }
    trace(*handler, 5, "file ", mapsPath, " cannot be read: ", std::strerror(error));
    ++unreadProcesses_;
}

void QuaskClientScanner::forEachMapsFile(
    std::function<void(String const&, MapsFile&)> const& visit) const
{
    unreadProcesses_ = 0;
    DirNode proc(*handler, "/proc", nullptr);
    if (!proc.isOpen()) {
        Dovan::logAndThrow<Dovan::RuntimeException>(*handler, "Couldn't open /proc");
    }
    MapsFile maps;
    for (std::string mapsPath; readNextMmap(proc, mapsPath, maps);) {
        visit(mapsPath, maps);
    }
    if (unreadProcesses_ > 0) {
        trace(*handler, 1, "QuaskClientScanner: ", unreadProcesses_,
              unreadProcesses_ == 1 ? " process" : " processes", " could not be looked into");
    }
}

void QuaskClientScanner::forEachMapsLine(
    std::function<void(String const& mapsPath, std::string_view line)> const& visit) const
{
    forEachMapsFile([&](String const& mapsPath, MapsFile& maps) {
        for (std::string_view line; maps.nextLine(line);) {
            visit(mapsPath, line);
        }
        if (maps.error() != 0) {
            noteFailure(mapsPath, maps.error());
        }
    });
}

}  // namespace Quask
