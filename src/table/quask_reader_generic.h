#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/debuggable.h"
#include "support/root_path.h"
#include "table/bucket_reader_table.h"
#include "table/bucket_table.h"
#include "table/chain_walk.h"
#include "table/direction.h"
#include "table/lookaside_value.h"
#include "table/reader_statistics.h"
#include "table/scan_handler.h"
#include "table/slot_reader_generic_table.h"
#include "table/slot_table.h"

namespace Quask {

// The read-only view of one table that its writers keep changing: never locks, never writes. Owns
// the mappings of the bucket file and the slot file. One thread.
class QuaskReaderGeneric : public Dovan::Debuggable
{
public:
    using ScanHandler = Quask::ScanHandler;

    // A table's path below the root directory. Nothing is mapped yet.
    explicit QuaskReaderGeneric(std::string const& tableName);
    ~QuaskReaderGeneric() override;

    // Maps both files and takes the layout from the slot header, whatever the headers say. Both
    // are of one table: see attachTogether(). False when one of the files is missing, empty or
    // cannot be mapped.
    bool attach();

    // Likewise, but the two files may be of two tables: for a report that attaches more together.
    bool attachOnce();

    // Unmaps both files.
    void detach();

    bool isAttached() const { return buckets.isAttached() && slots.isAttached(); }

    // Whether the mapped files are still those that have the names; true while none is mapped.
    bool isCurrent() const { return buckets.isCurrent() && slots.isCurrent(); }

    // Whether a page of the files could not be read and was treated as zeros.
    bool hasUnreadablePage() const
    {
        return buckets.hasUnreadablePage() || slots.hasUnreadablePage();
    }

    // Checks both headers and sets the counters to 0. False with the reason in `error` when the
    // table cannot be walked. Precondition: attached.
    bool validate(std::string& error);

    // Walks the chains of buckets from `first` on; see ChainWalk for what `count` and `byPosition`
    // mean and for what is thrown. `Handler` is a ScanHandler; its own final type saves the calls
    // through the table of virtual functions. Precondition: validated.
    template <typename Checks = AllWalkChecks, typename Handler>
    void scan(Handler& scanHandler, unsigned first, unsigned count, Direction direction,
              bool byPosition)
    {
        ChainWalk<Handler, Checks> walk(*handler, buckets, slots, statistics, chainRestarts_,
                                        scanHandler);
        walk.run(first, count, direction, byPosition);
    }

    // The table's channel; valid as long as the reader.
    Dovan::Platform::DebugHandler& channel() const { return *handler; }

    // The type and the size of the values. Empty before validate().
    ValueFormat const& valueFormat() const { return valueFormat_; }

    // Bytes of the slot file that are mapped; 0 while nothing is.
    unsigned mappedSlotBytes() const { return slots.mappedSize(); }

    // The slot file's size in bytes now, which grows with the table.
    unsigned slotFileSize() const { return slots.fileSize(); }

    std::uint32_t lookasideHits() const { return statistics.lookasideHits; }
    std::uint32_t chainRestarts() const { return chainRestarts_; }
    ReaderStatistics const& readerStatistics() const { return statistics; }

    // In the mappings, as the writers leave them at any moment. Precondition: attached.
    BucketTable::Header const& liveBucketsHeader() const { return buckets.liveHeader(); }
    SlotTable<EmptyValue>::Header const& liveSlotsHeader() const { return slots.liveHeader(); }

    // Bytes that can be read from the slot file's mapping.
    std::size_t readableSlotBytes() const { return slots.readableSize(); }

    // Lets the pages of the slot file go from memory until they are read again.
    void letSlotsGo() const { slots.letGo(); }

    // A copy of the lookaside value, of the type and size that `header` says, a consistent copy of
    // the slot header. Precondition: attached.
    LookasideValue lookasideValue(SlotTable<EmptyValue>::Header const& header) const
    {
        return {slots, header};
    }

private:
    RootPath rootPath;
    ReaderStatistics statistics;
    BucketReaderTable buckets;
    SlotReaderGenericTable slots;
    std::uint32_t chainRestarts_ = 0;
    ValueFormat valueFormat_;
};

}  // namespace Quask
