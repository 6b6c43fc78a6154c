#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "base/debug_handler.h"

namespace QuaskTesting {

// A channel that keeps what is logged at its level and below: "LEVEL text".
class RecordingHandler final : public Dovan::Platform::DebugHandler
{
public:
    explicit RecordingHandler(int enabled = 9) : enabled_(enabled) {}

    bool isEnabled(int level) const override { return level <= enabled_; }

    void log(std::ostream& message, int level) override
    {
        auto& text = dynamic_cast<std::ostringstream&>(message);
        lines.push_back(std::to_string(level) + " " + text.str());
    }

    std::vector<std::string> lines;

private:
    int enabled_;
};

}  // namespace QuaskTesting
