#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/live_file.h"
#include "support/private_root.h"
#include "support/recording_handler.h"
#include "support/table_files.h"
#include "table/chain_walk.h"
#include "table/scripted_handler.h"

namespace QuaskTesting {

// A table in files, a reader's view of it and a handler that notes what a walk gives it.
class WalkFixture : public testing::Test
{
protected:
    using Lines = std::vector<std::string>;

    // Writes the files that `image` describes and sets the readers up on them.
    void open()
    {
        image.writeTo(root, "eq");
        attach();
    }

    // Sets the readers up on the files that are there.
    void attach()
    {
        liveBuckets = std::make_unique<LiveFile>(root.path() + "/eq/buckets");
        liveSlots = std::make_unique<LiveFile>(slotsPath);
        std::string error;
        Quask::ValueFormat format;
        buckets.emplace(debug, rootPath);
        slots.emplace(debug, rootPath, statistics);
        ASSERT_TRUE(buckets->attach() && slots->attach());
        ASSERT_TRUE(buckets->validate(error)) << error;
        ASSERT_TRUE(slots->validate(error, format)) << error;
    }

    void walk(unsigned first, unsigned count, Quask::Direction direction = Quask::Direction::upward,
              bool byPosition = true)
    {
        walkWith(handler, first, count, direction, byPosition);
    }

    template <typename Checks = Quask::AllWalkChecks, typename Handler>
    void walkWith(Handler& anyHandler, unsigned first = 0, unsigned count = 0xffffffff,
                  Quask::Direction direction = Quask::Direction::upward, bool byPosition = true)
    {
        Quask::ChainWalk<Handler, Checks> chainWalk(debug, *buckets, *slots, statistics, restarts,
                                                    anyHandler);
        chainWalk.run(first, count, direction, byPosition);
    }

    // As the tool does: every bucket once.
    void walk() { walk(0, 0xffffffff); }

    // The changes that a writer makes. Every rewriting of a link raises its version.
    void setHead(std::uint32_t bucket, std::uint32_t slot)
    {
        liveBuckets->relink(BucketsOffset::link(bucket), slot);
    }
    void setNext(std::uint32_t slot, std::uint32_t next)
    {
        liveSlots->relink(offsetOf(slot), next);
    }
    void setValue(std::uint32_t slot, std::string_view value)
    {
        liveSlots->storeBytes(offsetOf(slot) + RecordOffset::value, value);
    }
    void publish(std::uint32_t count) { liveSlots->relink(SlotsOffset::mappedSlots, count); }

    // Lengthens the file for this many slots, which stay unpublished.
    void lengthen(std::uint32_t count)
    {
        liveSlots->resize(slotsFileSize(image.slotsHeader.slotSize, count));
    }

    std::uint64_t offsetOf(std::uint32_t slot) const
    {
        return SlotsOffset::slot(image.slotsHeader.slotSize, slot);
    }

    PrivateRoot root;
    std::string const slotsPath = root.path() + "/eq/slots";
    TableImage image = TableImage::of("std::int32_t", 4);
    RecordingHandler debug{0};
    Quask::RootPath rootPath{debug, "eq", false};
    Quask::ReaderStatistics statistics;
    std::uint32_t restarts = 0;
    std::optional<Quask::BucketReaderTable> buckets;
    std::optional<Quask::SlotReaderGenericTable> slots;
    ScriptedHandler handler{4};
    std::unique_ptr<LiveFile> liveBuckets;
    std::unique_ptr<LiveFile> liveSlots;
};

}  // namespace QuaskTesting
