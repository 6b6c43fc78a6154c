#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "clients/recording_scanner.h"
#include "support/private_root.h"

namespace QuaskTesting {

using Lines = std::vector<std::string>;
using InfoByTable = Quask::QuaskClientScanner::TableToInfoMap;

// A line of a maps file as the kernel writes it: the path begins in column 73.
inline std::string mapsLine(std::string const& permissions, std::string const& path)
{
    std::string line = "7f0c5a1e2000-7f0c5a1e3000 " + permissions + " 00000000 00:1a 1234";
    line.resize(std::max(line.size(), std::size_t{73}), ' ');
    return line + path + "\n";
}

inline std::string const executable = mapsLine("r-xp", "/usr/bin/feeder");
inline std::string const table = "/dev/shm/quask/feed";

class ProcessMapsTest : public testing::Test
{
protected:
    std::string writeMaps(std::string const& contents) { return root.writeFile("maps", contents); }

    // The records of the table's clients in a maps file of these contents.
    Lines infosIn(std::string const& contents)
    {
        Lines infos;
        scanner.extractMmapInfo(table, writeMaps(contents), infos);
        return infos;
    }

    InfoByTable infosByTableIn(std::string const& contents)
    {
        InfoByTable infos;
        scanner.extractMmapInfoByTable("/dev/shm/quask", writeMaps(contents), infos);
        return infos;
    }

    std::string info(std::string const& fields) const { return pid + " " + fields + " "; }

    QuaskTesting::PrivateRoot root;
    RecordingScanner quiet{-1};
    RecordingScanner traced{9};
    RecordingScanner& scanner = quiet;

private:
    // Of DIRECTORY/PID/maps the second part is taken for the pid.
    std::string const pid = quiet.getToken(root.path(), 2, "/");
};

}  // namespace QuaskTesting
