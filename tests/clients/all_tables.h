#pragma once

#include <chrono>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#include "clients/recording_scanner.h"

namespace QuaskTesting {

// What `job` returns, which reports on the tables of all processes. That ends with
// std::out_of_range as long as a process that is not the test's has a file mapped which is called
// like a table's and lies in a directory with a short path: the job is then repeated for a while.
template <typename Job>
auto undisturbed(Job const& job)
{
    for (int attempts = 0; attempts < 300; ++attempts) {
        try {
            return job();
        } catch (std::out_of_range const&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    return job();
}

// Whether that can be done on this machine at the moment.
inline bool allTablesCanBeReported(std::string const& rootPath)
{
    try {
        return undisturbed([&rootPath] {
            std::set<Quask::Model::QuaskTable> tables;
            RecordingScanner(-1).getAllClients(rootPath, tables);
            return true;
        });
    } catch (std::out_of_range const&) {
        return false;
    }
}

}  // namespace QuaskTesting
