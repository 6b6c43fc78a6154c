#pragma once

#include <string>

#include "support/mem_local.h"

namespace Mem {

// A segment backed by a named file, read-only. The file stays open while it is mapped, and is never
// written, locked, created or lengthened. Only a regular file is ever opened.
//
// Other processes may cut the file short while it is mapped; reading what is gone then ends the
// process in the way that MappedFiles describes.
class Shared : public Local
{
public:
    static constexpr unsigned SHARED_DEFAULT_FLAGS = 0;

    // The file `name` in the directory `directory`. Nothing is opened yet. The two booleans are
    // always false in this system; neither they nor the flags ask for anything.
    Shared(char const* directory, char const* name, bool, unsigned flags, bool);
    ~Shared() override;

    // Maps `bytes` bytes of the file from its start. The address, or null when the file cannot be
    // opened or mapped, is no regular file, ends before the last page asked for, `mode` is not
    // read, or the segment is attached.
    void* attach(unsigned bytes, Mode mode);

    // As for Local. The caller has made sure that the file is that long.
    void* resize(unsigned bytes);

    // As for Local; forgets the file, too.
    int detach();

    // The file's size in bytes now: of the file that is mapped, else of the one that has the name.
    // 0 when there is none or it is no regular file; 4294967295 from 4 GiB on.
    unsigned memSize() const;

protected:
    std::string prefix;
    std::string filename;

private:
    int descriptor_ = -1;
};

}  // namespace Mem
