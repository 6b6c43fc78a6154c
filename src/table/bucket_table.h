#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/debug_handler.h"
#include "base/debuggable.h"
#include "mem/quask_mem.h"
#include "support/root_path.h"

namespace Quask {

// The bucket file of a table: a header, then one head link per bucket.
class BucketTable : public Dovan::Debuggable
{
public:
    // As it is in the file, little-endian. The writer does not change it after creating the table.
    struct Header
    {
        std::uint64_t magic;
        std::uint32_t version;
        std::uint32_t orvik;  // creator stamp, see Util::decodeOrvik
        std::uint32_t numBuckets;
        std::uint32_t ownerPid;

        // Copies a mapped header, each word loaded once.
        Header(Header const& live);

        // Whether a file of `fileSize` bytes with this header can be walked. When not, `error` gets
        // the reason, which is also logged at level 0. An `expectedOrvik` of 0 fits every stamp.
        bool validate(Dovan::Platform::DebugHandler& handler, unsigned fileSize,
                      unsigned expectedOrvik, std::string& error) const;
    };

    // "QUASKBKT" in file order.
    static constexpr std::uint64_t magic = 0x544b424b53415551;
    static constexpr std::uint32_t version = 1;

    // `sharedHandler` must outlive the table. Nothing is mapped yet.
    BucketTable(Dovan::Platform::DebugHandler& sharedHandler, RootPath const& rootPath);
    ~BucketTable() override;

protected:
    QuaskMem mem;
};

static_assert(sizeof(BucketTable::Header) == 24);
static_assert(offsetof(BucketTable::Header, version) == 8);
static_assert(offsetof(BucketTable::Header, orvik) == 12);
static_assert(offsetof(BucketTable::Header, numBuckets) == 16);
static_assert(offsetof(BucketTable::Header, ownerPid) == 20);

}  // namespace Quask
