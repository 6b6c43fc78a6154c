#pragma once

#include <string>

#include <sys/stat.h>

#include "support/without_capabilities.h"

namespace QuaskTesting {

// While it lives, this process may examine the file but not open it: its permissions say so, and
// the privileges by which root need not care are laid down.
class UnreadableFile
{
public:
    explicit UnreadableFile(std::string const& path) { chmod(path.c_str(), 0); }

private:
    WithoutCapabilities const ordinary_{CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH};
};

}  // namespace QuaskTesting
