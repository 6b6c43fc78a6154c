#pragma once

#include "table/slot_ref.h"

namespace Quask {

// What a walk over a table's chains does with them. The walk copies each value into the handler's
// one buffer; nothing that it passes lies in shared memory. A false result ends the walk. There is
// no virtual destructor: handlers are created and destroyed as what they are. One that also takes
// many chains at once is a BatchHandler.
struct ScanHandler
{
    unsigned char* data = nullptr;  // value buffer, owned by the handler
    unsigned size = 0;              // its length in bytes

    // The chain of `bucket` has ended; once for every bucket, empty ones included. `ref` is the
    // link that ended it, the bucket's own for an empty one.
    virtual bool done(unsigned bucket, SlotRef const& ref) = 0;

    // One slot of the chain of `bucket`, in the order of the chain. `ref` is the link that led to
    // it. `valueBytes` is this handler's `data`, `length` its `size`. `lookaside` says that the
    // value was taken from the lookaside slot, `sequence` is the slot's state word that the value
    // agrees with.
    virtual bool handleSlot(unsigned bucket, SlotRef const& ref, unsigned char* valueBytes,
                            unsigned length, bool lookaside, unsigned sequence) = 0;

    // The chain of `bucket` changed and is about to be walked again from its head: what was
    // gathered for it since the last done() is void. The result is ignored.
    virtual bool restart(unsigned bucket) = 0;

protected:
    ~ScanHandler() = default;
};

}  // namespace Quask
