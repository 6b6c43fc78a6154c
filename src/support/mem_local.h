#pragma once

#include <cstddef>
#include <string>

#include "support/regular_file.h"
#include "support/watched_mapping.h"

namespace Mem {

// How a segment is attached. The tool only ever reads.
enum class Mode : int
{
    write = 0,
    read = 1
};

// Bytes of one page of memory; a power of two.
extern std::size_t const pageSize_;

// `size` rounded up to whole pages, in bytes.
std::size_t roundUpToPages(std::size_t size);

// A segment of anonymous memory, and the base of every segment. Owns its mapping, and the file that
// is mapped, if any. One thread; the contents of a shared segment may be changed by other processes
// at any time.
class Local
{
public:
    static constexpr unsigned LOCAL_DEFAULT_FLAGS = 0;

    Local() = default;
    Local(Local const&) = delete;
    Local& operator=(Local const&) = delete;

    // Detaches, unless that was done.
    virtual ~Local();

    // Maps `bytes` bytes of zeros; the address of the first, or null when there is no memory,
    // `bytes` is 0, or the segment is attached.
    void* attach(unsigned bytes, Mode mode);

    // Maps the contents again with `bytes` bytes, which may move them: every pointer into the
    // segment is then invalid. The new address, or null when that fails; the old mapping is then
    // kept.
    void* resize(unsigned bytes);

    // Unmaps, and closes the file if there is one. 0, also when nothing was attached; -1 when the
    // system refuses.
    int detach();

    // Bytes that are mapped; 0 while nothing is.
    unsigned mappedSize() const { return size; }

    // Bytes that may be read from the mapping's address on: those mapped and the rest of their
    // page.
    std::size_t readableSize() const { return roundUpToPages(size); }

    // The first bytes in `range`, offsets in the mapping, that lie in no hole of the file; see
    // RegularFile::nextData(). A load from a hole may give the file a page of zeros, which takes
    // memory. Anonymous memory has no holes.
    ByteRange nextData(ByteRange range) const
    {
        return file.isOpen() ? file.nextData(range) : range;
    }

    // Lets the whole pages in `range` of a mapped file go from memory, where they count as this
    // process's; the next load brings them back.
    void letGo(ByteRange range) const;

    // Whether a page of the mapped file could not be read and was replaced by zeros; see
    // UnreadableAsZeros.
    bool hasUnreadablePage() const { return watched.hasUnreadablePage(); }

protected:
    // Maps `bytes` bytes of `mappedFile`, or of zeros when there is none.
    void* map(unsigned bytes, int protection, RegularFile mappedFile);

    unsigned size = 0;  // bytes mapped; 0 while nothing is
    void* address = nullptr;
    bool detached = false;
    RegularFile file;               // what is mapped; none for anonymous memory
    WatchedMapping watched;         // its mapping
    mutable std::string failure{};  // why the last operation failed that did, in words
};

}  // namespace Mem
