#pragma once

#include <string>

#include "base/debug_handler.h"

namespace Dovan {

// Base of every object that writes diagnostics: has the channel it writes to, and deletes the
// channel at the end when it obtained it itself. Neither copied nor assigned.
class Debuggable
{
public:
    // Obtains the channel `channelName` and owns it.
    explicit Debuggable(std::string const& channelName)
        : handler(Platform::getDebugHandler(channelName)), owned(true)
    {}

    // Shares `sharedHandler`, which must outlive this object.
    explicit Debuggable(Platform::DebugHandler& sharedHandler)
        : handler(&sharedHandler), owned(false)
    {}

    Debuggable(Debuggable const&) = delete;
    Debuggable& operator=(Debuggable const&) = delete;

    virtual ~Debuggable();

protected:
    Platform::DebugHandler* handler;  // never null while the object is alive
    bool owned;
};

}  // namespace Dovan
