#pragma once

#include <ostream>
#include <sstream>
#include <string>

namespace Dovan::Platform {

// A named channel for diagnostics. Levels: 0 errors that accompany a failure, 1 system trouble that
// the caller survives, 3 and 5 routine traces, 9 one line per item. A channel never changes what
// the program reports or how it ends. One thread at a time.
class DebugHandler
{
public:
    virtual ~DebugHandler();

    // Whether messages of `level` go anywhere; nothing is built for one that does not.
    virtual bool isEnabled(int level) const = 0;

    // Writes out the text that has been collected in `message`, which is a string stream.
    virtual void log(std::ostream& message, int level) = 0;
};

// A new channel of this name, owned by the caller. It writes to standard error, one line per
// message, led by the channel's name and the level, what the environment variable DOVAN_DEBUG
// enables: a comma-separated list of LEVEL (for every channel) and NAME=LEVEL; the last item that
// matches the name counts, and enables its level and all below. Without the variable nothing is
// enabled. An item that is neither is ignored. A newline in a name or a message is written as \n.
DebugHandler* getDebugHandler(std::string const& name);

}  // namespace Dovan::Platform

namespace Dovan {

// Logs the parts, streamed one after the other, when `level` is enabled; else builds no text.
template <typename... Parts>
void trace(Platform::DebugHandler& handler, int level, Parts const&... parts)
{
    if (!handler.isEnabled(level)) {
        return;
    }
    std::ostringstream message;
    message.precision(12);
    (message << ... << parts);
    handler.log(message, level);
}

// Logs `message` at level 0 and throws it.
template <typename ExceptionType>
[[noreturn]] void logAndThrow(Platform::DebugHandler& handler, std::string const& message)
{
    trace(handler, 0, message);
    throw ExceptionType(message, true);
}

}  // namespace Dovan
