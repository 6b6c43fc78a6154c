#pragma once

#include <string>

#include "base/debug_handler.h"
#include "base/debuggable.h"
#include "support/mem_local.h"
#include "support/mem_shared.h"
#include "support/root_path.h"

namespace Quask {

// One file of a table as a memory segment, or anonymous memory in its place, with a trace of every
// operation at level 5 of the table's channel, and of the system's reason when one fails. Reports
// no errors of its own: it is up to the owner to report a null address or a size of 0. Reads
// nothing of what it maps. Neither copied nor assigned; one thread.
class QuaskMem : public Mem::Shared, public Dovan::Debuggable
{
public:
    // The file `name` in the directory of `rootPath`, whose text is copied. With `anonymous` all
    // operations go to anonymous memory instead. `sharedHandler` must outlive the segment.
    QuaskMem(Dovan::Platform::DebugHandler& sharedHandler, RootPath const& rootPath,
             char const* name, bool anonymous);
    ~QuaskMem() override;

    // The path of the file, or "[ANONYMOUS]".
    std::string getFilename() const;

    // Bytes: of the file as it is now (0 when there is none), or of the anonymous mapping.
    unsigned memSize() const;

    // Maps `bytes` bytes; the address of the first, or null. Pointers into the segment are valid
    // until it is resized, detached or destroyed.
    void* attach(unsigned bytes, Mem::Mode mode);

    // Maps again with `bytes` bytes; the address, which may be another, or null (see Mem::Local).
    void* resize(unsigned bytes);

    // Unmaps; 0, or -1 when the system refuses.
    int detach();

    // Whether the file that is mapped is still the one that has the name; true while none is
    // mapped.
    bool isCurrent() const;

protected:
    bool localMem;  // anonymous memory in place of the file

private:
    // At level 5, once: why the last operation failed, when the system gave a reason.
    void traceFailure(char const* operation) const;
};

}  // namespace Quask
