#include "clients/header_figures.h"

#include <atomic>
#include <cstdint>

#include "mem/atomics.h"
#include "mem/ver_u32.h"
#include "table/bucket_table.h"
#include "table/slot_table.h"
#include "table/vandral.h"

namespace Quask {

void QuaskTest::populateQuaskTableHeaderInfo(QuaskReaderGeneric& reader,
                                             VandralReaderGeneric& vandral,
                                             Model::QuaskTable& table)
{
    // relaxed: each figure stands for itself, as of the moment of its load.
    auto const figure = [](std::uint32_t const& live) {
        return Mem::Atomics::load32(&live, std::memory_order_relaxed);
    };
    Model::HeaderInfo info;
    if (reader.attach()) {
        info.buckets = figure(reader.liveBucketsHeader().numBuckets);
        info.slots = figure(reader.liveSlotsHeader().maxSlots);
        info.occupiedSlots = figure(reader.liveSlotsHeader().occupiedSlots);
    }
    if (vandral.attach()) {
        info.primaryNotifications = Vandral::Header(*vandral.primaryHeader).notifications.value;
        info.secondaryNotifications = Vandral::Header(*vandral.secondaryHeader).notifications.value;
    }
    table.headerInfo = info;
}

}  // namespace Quask
