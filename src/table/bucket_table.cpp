#include "table/bucket_table.h"

#include <ios>

#include "mem/atomics.h"
#include "table/header_check.h"

namespace Quask {

BucketTable::Header::Header(Header const& live)
{
    Mem::Atomics::copy(static_cast<void*>(this), &live, sizeof *this);
}

bool BucketTable::Header::validate(Dovan::Platform::DebugHandler& handler, unsigned fileSize,
                                   unsigned expectedOrvik, std::string& error) const
{
    if (fileSize < sizeof(Header)) {
        return failCheck(handler, error, "BucketTable::validate() bad header file size: ", fileSize,
                         " wanted:", sizeof(Header));
    }
    if (magic != BucketTable::magic) {
        return failCheck(handler, error, "BucketTable::validate() bad magic: ", std::hex, magic);
    }
    if (version != BucketTable::version) {
        return failCheck(handler, error, "BucketTable::validate() bad version: ", version);
    }
    if (expectedOrvik != 0 && orvik != expectedOrvik) {
        return failCheck(handler, error, "BucketTable::validate() bad orvik:", std::hex, orvik,
                         " wanted:", expectedOrvik);
    }
    // 32-bit on purpose: a count that wraps passes here and is stopped where the buckets are read.
    std::uint32_t const wanted = numBuckets * 8 + 24;
    if (fileSize < wanted) {
        return failCheck(handler, error, "BucketTable::validate() bad shmem size:", fileSize,
                         " wanted:", wanted, " for ", numBuckets, " buckets");
    }
    return true;
}

BucketTable::BucketTable(Dovan::Platform::DebugHandler& sharedHandler, RootPath const& rootPath)
    : Debuggable(sharedHandler), mem(sharedHandler, rootPath, "buckets", false)
{}

BucketTable::~BucketTable() = default;

}  // namespace Quask
