#pragma once

#include <algorithm>
#include <string>

#include "base/debug_handler.h"
#include "mem/atomics.h"
#include "support/root_path.h"
#include "table/bucket_table.h"
#include "table/slot_ref.h"

namespace Quask {

// Reads the bucket file of a table that other processes write. The file is mapped once, at the size
// it has then. The head links may change at any time, the header does not. One thread.
class BucketReaderTable : public BucketTable
{
public:
    BucketReaderTable(Dovan::Platform::DebugHandler& sharedHandler, RootPath const& rootPath);
    ~BucketReaderTable() override;

    // Maps the whole file. False, with the reason at level 0, when it is missing, empty or cannot
    // be mapped. Checks nothing of its contents.
    bool attach();

    // Checks the mapped header and takes over its number of buckets. False with the reason in
    // `error` when the file cannot be walked. Precondition: attached.
    bool validate(std::string& error);

    // Unmaps the file, and forgets what validate() took from it.
    void detach();

    bool isAttached() const { return header != nullptr; }

    // Whether the mapped file is still the one that has the name; true while none is mapped.
    bool isCurrent() const { return mem.isCurrent(); }

    // Whether a page of the file could not be read and was treated as zeros.
    bool hasUnreadablePage() const { return mem.hasUnreadablePage(); }

    // The link that begins the chain of bucket `index`, to be loaded atomically; valid as long as
    // the table. Throws CorruptionDetectedException when there is no such bucket or the mapping
    // ends before it.
    SlotRef const& getRef(unsigned index) const
    {
        if (index > maxIndex || index >= mappedBuckets_) [[unlikely]] {
            throwOutOfRange(index);
        }
        return links()[index];
    }

    // Number of buckets; 0 before validate().
    unsigned bucketCount() const { return numBuckets; }

    // The number of buckets that getRef() gives.
    unsigned readableBuckets() const { return std::min(numBuckets, mappedBuckets_); }

    // The mapped header. Precondition: attached.
    Header const& liveHeader() const { return *header; }

private:
    SlotRef const* links() const
    {
        return Mem::Atomics::knownAligned(reinterpret_cast<SlotRef const*>(header + 1));
    }

    [[noreturn]] void throwOutOfRange(unsigned index) const;

    unsigned numBuckets = 0;
    unsigned maxIndex = 0xffffffff;  // the highest index that getRef() accepts
    Header const* header = nullptr;
    unsigned mappedBuckets_ = 0;
};

}  // namespace Quask
