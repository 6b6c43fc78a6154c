#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "base/descriptor.h"

namespace Mem {

// The bytes from the offset `begin` on, before the offset `end`.
struct ByteRange
{
    std::size_t begin;
    std::size_t end;
};

// An open regular file, or none. Anything else is never opened for reading, since opening a device
// or a pipe may already do something to it. One thread; other processes may lengthen, cut,
// rename and replace the file at any time.
class RegularFile
{
public:
    // None.
    RegularFile() = default;

    // Opens the file to look at its size. None, with the reason in words in `failure`, when that
    // fails, or when the name leads to anything else, a symbolic link included (see
    // openWithoutLinks).
    static RegularFile examine(std::string const& path, std::string& failure);

    // Likewise, to read it, without blocking.
    static RegularFile openForReading(std::string const& path, std::string& failure);

    bool isOpen() const { return descriptor_.isOpen(); }

    // Its size in bytes now; 0 for none, 4294967295 from 4 GiB on.
    unsigned size() const;

    // The first bytes in `range` that lie in no hole of the file, up to the next hole; none, at the
    // end of the range, when all lie in holes. A file system may not report its holes, and there
    // are none after the last page of the file.
    ByteRange nextData(ByteRange range) const;

    // Whether the name leads to this very file now.
    bool isNamed(std::string const& path) const;

    // For mapping it; valid as long as this object.
    int descriptor() const { return descriptor_.number(); }

private:
    explicit RegularFile(Dovan::Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

    Dovan::Descriptor descriptor_;
};

}  // namespace Mem
