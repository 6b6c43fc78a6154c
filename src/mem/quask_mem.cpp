#include "mem/quask_mem.h"

#include "mem/schedule_point.h"

namespace Quask {

using Dovan::trace;

QuaskMem::QuaskMem(Dovan::Platform::DebugHandler& sharedHandler, RootPath const& rootPath,
                   char const* name, bool anonymous)
    : Shared(rootPath.directory().c_str(), name, false,
             anonymous ? LOCAL_DEFAULT_FLAGS : SHARED_DEFAULT_FLAGS, false),
      Debuggable(sharedHandler),
      localMem(anonymous)
{
    trace(*handler, 5, "QuaskMem::QuaskMem() prefix: ", prefix, " name:", name,
          " localMem:", localMem);
}

QuaskMem::~QuaskMem() = default;

std::string QuaskMem::getFilename() const
{
    std::string result = localMem ? "[ANONYMOUS]" : filename;
    trace(*handler, 5, "QuaskMem::getFilename() localMem: ", localMem, " filename: ", result);
    return result;
}

unsigned QuaskMem::memSize() const
{
    Mem::scheduleFileSize();
    unsigned const result = localMem ? size : Shared::memSize();
    trace(*handler, 5, "QuaskMem::memSize() localMem: ", localMem, " filename: ", getFilename(),
          " memSize: ", result);
    if (result == 0) {
        traceFailure("memSize");
    }
    return result;
}

void* QuaskMem::attach(unsigned bytes, Mem::Mode mode)
{
    // The size traced is the one before this call.
    trace(*handler, 5, "QuaskMem::attach() size: ", size, " localMem: ", localMem,
          " filename: ", getFilename());
    Mem::scheduleNameUse();
    void* const result = localMem ? Local::attach(bytes, mode) : Shared::attach(bytes, mode);
    if (result == nullptr) {
        traceFailure("attach");
    }
    return result;
}

void* QuaskMem::resize(unsigned bytes)
{
    trace(*handler, 5, "QuaskMem::resize() resizing from ", size, " to ", bytes,
          " localMem: ", localMem, " filename: ", getFilename());
    void* const result = Local::resize(bytes);
    if (result == nullptr) {
        traceFailure("resize");
    }
    return result;
}

int QuaskMem::detach()
{
    trace(*handler, 5, "QuaskMem::detach() localMem: ", localMem,
          " filename: ", localMem ? "[ANONYMOUS]" : filename);
    return Local::detach();
}

bool QuaskMem::isCurrent() const
{
    Mem::scheduleNameUse();
    return Shared::isCurrent();
}

void QuaskMem::traceFailure(char const* operation) const
{
    if (!failure.empty()) {
        trace(*handler, 5, "QuaskMem::", operation, "() failed: ", failure,
              " filename: ", localMem ? "[ANONYMOUS]" : filename);
        failure.clear();
    }
}

}  // namespace Quask
