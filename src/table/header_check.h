#pragma once

#include <sstream>
#include <string>

#include "base/debug_handler.h"

namespace Quask {

// Stores the parts, streamed one after the other, in `error`, and logs them at level 0. Always
// false, the result of the check that failed.
template <typename... Parts>
bool failCheck(Dovan::Platform::DebugHandler& handler, std::string& error, Parts const&... parts)
{
    std::ostringstream message;
    (message << ... << parts);
    error = message.str();
    Dovan::trace(handler, 0, error);
    return false;
}

}  // namespace Quask
