#pragma once

#include <string>

#include "support/mem_local.h"

namespace Mem {

// A segment backed by a named file, read-only. The file stays open while it is mapped, and is never
// written, locked, created or lengthened. Only a regular file is ever opened, and no symbolic link
// is followed to it below the root directory.
//
// Other processes may cut the file short while it is mapped; reading what is gone then ends the
// process in the way that WatchedMapping describes.
class Shared : public Local
{
public:
    static constexpr unsigned SHARED_DEFAULT_FLAGS = 0;

    // The file `name` in the directory `directory`. Nothing is opened yet. The two booleans are
    // always false in this system; neither they nor the flags ask for anything.
    Shared(char const* directory, char const* name, bool, unsigned flags, bool);
    ~Shared() override;

    // Maps `bytes` bytes of the file from its start. The address, or null when the file cannot be
    // opened or mapped, is not a regular file, ends before the last page asked for, `mode` is not
    // read, or the segment is attached. To be resized only to what the file is then long enough
    // for.
    void* attach(unsigned bytes, Mode mode);

    // The file's size in bytes now: of the file that is mapped, else of the one that has the name.
    // 0 when there is none or it is not a regular file; 4294967295 from 4 GiB on.
    unsigned memSize() const;

    // Whether the name leads to the file that is mapped; true while none is.
    bool isCurrent() const;

protected:
    std::string prefix;
    std::string filename;
};

}  // namespace Mem
