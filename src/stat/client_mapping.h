#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "stat/file_identity.h"

namespace Quask::Stat {

// The files whose mappings say what part a process has in a table.
enum class ClientFile
{
    slots,
    vandral1,
    orvik,
};

// A mapping of a file that is called like one of them.
struct ClientMapping
{
    FileIdentity identity;
    ClientFile file;
    bool canRead;    // without being able to write
    bool canWrite;   // and read
    bool isRemoved;  // nothing has the name any more, or another file has it
    std::string directory;
};

// Reads a line of /proc/PID/maps, without its newline. Nothing for a line of any other mapping.
std::optional<ClientMapping> readClientMapping(std::string_view line);

}  // namespace Quask::Stat
