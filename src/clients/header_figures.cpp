#include "clients/header_figures.h"

#include <atomic>
#include <cstdint>

#include "base/debug_handler.h"
#include "mem/atomics.h"
#include "mem/ver_u32.h"
#include "support/watched_mapping.h"
#include "table/attach_together.h"
#include "table/bucket_table.h"
#include "table/slot_table.h"
#include "table/vandral.h"

namespace Quask {

void QuaskTest::populateQuaskTableHeaderInfo(QuaskReaderGeneric& reader,
                                             VandralReaderGeneric& vandral,
                                             Model::QuaskTable& table)
{
    // relaxed: each figure is independent, from the moment of its load.
    auto const figure = [](std::uint32_t const& live) {
        return Mem::Atomics::load32(&live, std::memory_order_relaxed);
    };
    Mem::UnreadableAsZeros const unreadableAsZeros;
    bool hasReader = false;
    bool hasVandral = false;
    auto const attachAll = [&] {
        hasReader = reader.attachOnce();
        hasVandral = vandral.attach();
        return true;
    };
    Model::HeaderInfo info;
    if (attachTogether(reader.channel(), attachAll, reader, vandral)) {
        if (hasReader) {
            info.buckets = figure(reader.liveBucketsHeader().numBuckets);
            info.slots = figure(reader.liveSlotsHeader().maxSlots);
            info.occupiedSlots = figure(reader.liveSlotsHeader().occupiedSlots);
        }
        if (hasVandral) {
            info.primaryNotifications = Vandral::Header(*vandral.primaryHeader).notifications.value;
            info.secondaryNotifications =
                Vandral::Header(*vandral.secondaryHeader).notifications.value;
        }
    }
    if (reader.hasUnreadablePage()) {
        Dovan::trace(reader.channel(), 1, "populateQuaskTableHeaderInfo() cannot read a page of ",
                     "the bucket file or the slot file");
        info.buckets = info.slots = info.occupiedSlots = Model::HeaderInfo::notAvailable;
    }
    if (vandral.hasUnreadablePage()) {
        Dovan::trace(reader.channel(), 1, "populateQuaskTableHeaderInfo() cannot read a page of ",
                     "a Vandral file");
        info.primaryNotifications = info.secondaryNotifications = Model::HeaderInfo::notAvailable;
    }
    table.headerInfo = info;
}

}  // namespace Quask
