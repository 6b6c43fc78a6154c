#pragma once

#include <cstddef>
#include <ostream>
#include <string_view>

#include "base/standard_output.h"
#include "base/text_buffer.h"

namespace Quask {

// Where finished lines go. Lines for standard output are built where they are to be written from:
// copying them there would cost as much as building them. One thread.
class LineOutput
{
public:
    // Lines are built in `line`, which is empty; it and `output` must outlive the object.
    LineOutput(std::ostream& output, Dovan::TextBuffer& line)
        : out_(output), line_(line), standardOutput_(Dovan::StandardOutput::of(output))
    {
        if (standardOutput_ != nullptr) {
            useRoomOfOutput();
        }
    }

    // Takes finished lines, newlines included, which were built in the buffer. The buffer may then
    // hold anything.
    void write(std::string_view lines)
    {
        if (standardOutput_ != nullptr) [[likely]] {
            standardOutput_->append(lines);
            useRoomOfOutput();
        } else {
            out_.write(lines.data(), static_cast<std::streamsize>(lines.size()));
        }
    }

private:
    void useRoomOfOutput()
    {
        std::size_t roomSize = 0;
        char* const room = standardOutput_->lendRoom(roomSize);
        line_.useMemory(room, roomSize);
    }

    std::ostream& out_;
    Dovan::TextBuffer& line_;
    Dovan::StandardOutput* standardOutput_;  // the buffer of `out_`, if it is that
};

}  // namespace Quask
