#pragma once

#include <cstddef>
#include <string>

namespace Mem {

// A mapping of a file, watched for the one moment when a load from it fails: SIGBUS. Another
// process has cut the file short, or the page cannot be read, because a full file system has no
// room for it or the device fails. Then what was printed so far is written out, one line on
// standard error names the file, and the process ends with status 1; see UnreadableAsZeros and
// ZerosForNow for the other ways. A SIGBUS for any other reason ends the process as it would
// without this.
//
// All watched mappings form a list, which the signal handler goes through. One thread.
class WatchedMapping
{
public:
    WatchedMapping() = default;
    WatchedMapping(WatchedMapping const&) = delete;
    WatchedMapping& operator=(WatchedMapping const&) = delete;
    ~WatchedMapping() { stop(); }

    // From now on watches the mapping of `bytes` bytes at `address`, and no other. `descriptor` is
    // of the mapped file, which the messages name by `path`; it stays open until stop().
    void watch(std::string const& path, int descriptor, void const* address, std::size_t bytes);

    // The mapping that is watched, if any, is at `address` now and has `bytes` bytes.
    void moveTo(void const* address, std::size_t bytes)
    {
        address_ = address;
        bytes_ = bytes;
    }

    // Forgets the mapping. To be called before it is unmapped.
    void stop();

    // Whether a page of the mapping could not be read since watch() and was replaced by zeros.
    bool hasUnreadablePage() const { return hasUnreadablePage_; }

private:
    friend struct WatchedMappings;

    bool isInList_ = false;
    WatchedMapping* previous_ = nullptr;
    WatchedMapping* next_ = nullptr;
    std::string path_;
    int descriptor_ = -1;
    void const* address_ = nullptr;
    std::size_t bytes_ = 0;
    bool volatile hasUnreadablePage_ = false;  // set by the signal handler
};

// While it lives, a page of a watched mapping that cannot be read does not end the process: from
// the first load that fails on it holds zeros, for this process alone, and the mapping knows. One
// at a time.
class UnreadableAsZeros
{
public:
    UnreadableAsZeros();
    UnreadableAsZeros(UnreadableAsZeros const&) = delete;
    UnreadableAsZeros& operator=(UnreadableAsZeros const&) = delete;
    ~UnreadableAsZeros();
};

// Likewise, but only for as long as it lives: then the pages are as they were, and a load from one
// of them fails again. For reading ahead of what counts. Throws nothing; where the files cannot be
// mapped again, the process ends as if the load had failed now. Not while the other lives, nor
// after it.
class ZerosForNow
{
public:
    ZerosForNow();
    ZerosForNow(ZerosForNow const&) = delete;
    ZerosForNow& operator=(ZerosForNow const&) = delete;
    ~ZerosForNow();

    // Whether a page was replaced since.
    bool hasReplaced() const;
};

}  // namespace Mem
