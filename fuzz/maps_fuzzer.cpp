// Reads the lists of mappings of some processes and sorts the clients of one table into roles. The
// input is the text of the lists, one after the other: a line that begins with "#" ends one and
// begins the next. Searching for one table and searching for all must find the same for that one.

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "clients/quask_client_scanner.h"
#include "input.h"
#include "work_directory.h"

namespace {

using Quask::QuaskClientScanner;

std::string const tableDirectory = "/q/feed";

constexpr int firstPid = 4711;
constexpr int maximumProcesses = 8;

// While it lives, the work directory is the current one, so that the process number is where it is
// looked for: in the second part of a maps file's path.
class InWorkDirectory
{
public:
    InWorkDirectory()
    {
        if (former_ < 0 || chdir(QuaskFuzzing::workDirectory().c_str()) != 0) {
            throw std::runtime_error("cannot change the directory");
        }
    }
    InWorkDirectory(InWorkDirectory const&) = delete;
    InWorkDirectory& operator=(InWorkDirectory const&) = delete;

    ~InWorkDirectory()
    {
        if (fchdir(former_) != 0) {
            std::abort();
        }
        close(former_);
    }

private:
    int const former_ = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
};

// The paths of the processes' maps files, which are written.
std::vector<std::string> layOut(QuaskFuzzing::Input input)
{
    mkdir("proc", 0700);
    std::vector<std::string> paths;
    for (int pid = firstPid; pid < firstPid + maximumProcesses && !input.atEnd(); ++pid) {
        std::string const directory = "proc/" + std::to_string(pid);
        mkdir(directory.c_str(), 0700);
        paths.push_back(directory + "/maps");
        std::ofstream file(paths.back(), std::ios::binary);
        while (!input.atEnd()) {
            auto const [line, isWhole] = input.lineAndEnd();
            if (line.starts_with('#')) {
                break;
            }
            file << line << (isWhole ? "\n" : "");
        }
    }
    return paths;
}

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

// Sorts the clients into roles and prints them. The commands come from here: those of processes of
// these numbers would be another every time.
void reportClients(QuaskClientScanner const& scanner, std::vector<std::string> const& infoList)
{
    QuaskClientScanner::QuaskClientList writers, keyShadow, shadowAndKeyShadow, all, shadow,
        passive;
    for (std::string const& info : infoList) {
        if (scanner.categorizeClient(info, writers, keyShadow, shadowAndKeyShadow, all)) {
            return;
        }
    }
    scanner.determineReaders(keyShadow, shadowAndKeyShadow, all, shadow, passive);
    QuaskClientScanner::CommandCache commands;
    for (int pid = firstPid; pid < firstPid + maximumProcesses; ++pid) {
        commands[pid] = "feeder";
    }
    scanner.populateCommandNames(writers, shadow, keyShadow, passive, commands);
    require(commands.size() == maximumProcesses);
    Quask::Model::QuaskTable const table(tableDirectory, writers, shadow, keyShadow, passive);
    require(!table.print().empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    InWorkDirectory const inWorkDirectory;
    QuaskClientScanner const scanner("", nullptr);
    std::vector<std::string> ofTable;
    QuaskClientScanner::TableToInfoMap ofAll;
    for (std::string const& path : layOut({data, size})) {
        scanner.extractMmapInfo(tableDirectory, path, ofTable);
        scanner.extractMmapInfoByTable(tableDirectory, path, ofAll);
    }
    auto const found = ofAll.find(tableDirectory);
    require(found == ofAll.end() ? ofTable.empty() : found->second == ofTable);
    for (auto const& [directory, infoList] : ofAll) {
        reportClients(scanner, infoList);
    }
    return 0;
}
