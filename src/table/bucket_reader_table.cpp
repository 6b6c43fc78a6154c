#include "table/bucket_reader_table.h"

#include <sstream>

#include "base/exception.h"
#include "mem/quask_mem.h"
#include "support/mem_local.h"

namespace Quask {

BucketReaderTable::BucketReaderTable(Dovan::Platform::DebugHandler& sharedHandler,
                                     RootPath const& rootPath)
    : BucketTable(sharedHandler, rootPath)
{}

BucketReaderTable::~BucketReaderTable() = default;

bool BucketReaderTable::attach()
{
    unsigned const size = mem.memSize();
    if (size == 0) {
        Dovan::trace(*handler, 0, "BucketReader::attach() no shared memory region");
        return false;
    }
    header = static_cast<Header const*>(mem.attach(size, Mem::Mode::read));
    if (header == nullptr) {
        Dovan::trace(*handler, 0, "BucketReader::attach() cannot attach to shmem size:", size);
        return false;
    }
    mappedBuckets_ = static_cast<unsigned>((mem.readableSize() - sizeof(Header)) / sizeof(SlotRef));
    return true;
}

void BucketReaderTable::detach()
{
    mem.detach();
    header = nullptr;
    numBuckets = 0;
    maxIndex = 0xffffffff;
    mappedBuckets_ = 0;
}

bool BucketReaderTable::validate(std::string& error)
{
    Header const copy(*header);
    if (!copy.validate(*handler, mem.memSize(), 0, error)) {
        return false;
    }
    numBuckets = copy.numBuckets;
    // With no bucket this wraps: every index is accepted, and the walk's bounds keep it from
    // reading.
    maxIndex = numBuckets - 1;
    return true;
}

void BucketReaderTable::throwOutOfRange(unsigned index) const
{
    std::ostringstream message;
    if (index > maxIndex) {
        message << "BucketReader::getRef() out-of-range, index:" << index << " max:" << maxIndex;
    } else {
        message << "BucketReader::getRef() outside the mapped file, index:" << index
                << " offset:" << sizeof(Header) + sizeof(SlotRef) * index
                << " mapped:" << mem.readableSize();
    }
    Dovan::logAndThrow<CorruptionDetectedException>(*handler, message.str());
}

}  // namespace Quask
