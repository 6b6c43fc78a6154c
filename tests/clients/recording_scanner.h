#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "clients/quask_client_scanner.h"
#include "support/recording_handler.h"

namespace QuaskTesting {

// A client scanner that keeps its diagnostics of the level enabled and below.
class RecordingScanner : public Quask::QuaskClientScanner
{
public:
    explicit RecordingScanner(int enabled = 9, char const* table = nullptr)
        : QuaskClientScanner("", table), recorder_(enabled)
    {
        delete handler;
        handler = &recorder_;
        owned = false;
    }

    // What was logged since the last call, as "LEVEL text", without the directory walker's traces.
    std::vector<std::string> takeLog()
    {
        std::vector<std::string> lines;
        lines.swap(recorder_.lines);
        std::erase_if(lines,
                      [](std::string const& line) { return line.starts_with("9 DirNode::"); });
        return lines;
    }

    // What `job` prints as its report, which must succeed.
    std::string reportOf(int (QuaskClientScanner::*job)())
    {
        std::ostringstream report;
        out = &report;
        EXPECT_EQ((this->*job)(), 0);
        return report.str();
    }

    RecordingHandler& recorder() { return recorder_; }

private:
    RecordingHandler recorder_;
};

}  // namespace QuaskTesting
