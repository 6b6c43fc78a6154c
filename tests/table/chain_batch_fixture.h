#pragma once

#include <algorithm>
#include <iterator>
#include <string>

#include "base/exception.h"
#include "table/walk_fixture.h"

namespace QuaskTesting {

inline bool isOfBatch(std::string const& line)
{
    return line.starts_with("batch ");
}

// Walks tables in batches, and compares that with walks one by one.
class ChainBatchTest : public WalkFixture
{
protected:
    // The lines of a walk in batches.
    template <typename Checks = Quask::AllWalkChecks>
    Lines const& walkInBatches(unsigned first = 0, unsigned count = 0xffffffff)
    {
        batchHandler.setSize(image.slotsHeader.valueSize);
        walkWith<Checks>(batchHandler, first, count);
        return batchHandler.lines;
    }

    // What a walk in batches ends with.
    std::string thrownInBatches()
    {
        try {
            walkInBatches();
        } catch (Quask::CorruptionDetectedException const& exception) {
            return exception.what();
        }
        return "nothing";
    }

    // Which buckets the walk was given in batches.
    Lines batches() const
    {
        Lines found;
        std::copy_if(batchHandler.lines.begin(), batchHandler.lines.end(),
                     std::back_inserter(found), isOfBatch);
        return found;
    }

    // The lines of a walk, without those that are not the same in batches.
    static Lines common(Lines lines)
    {
        std::string chain;  // the last one of which there was a slot
        std::erase_if(lines, [&chain](std::string const& line) {
            std::string const bucket = line.substr(0, line.find(':'));
            bool const isSlot = line.find(": slot ") != std::string::npos;
            chain = isSlot ? bucket : chain;
            return isOfBatch(line) || (!isSlot && bucket != chain);
        });
        return lines;
    }

    // Walks a table one by one and in batches, and expects the same.
    void expectTheSame(TableImage const& table)
    {
        image = table;
        open();
        handler.setSize(image.slotsHeader.valueSize);
        handler.lines.clear();
        walk();
        batchHandler.lines.clear();
        walkInBatches();
        EXPECT_EQ(common(batchHandler.lines), common(handler.lines));
    }

    // As many chains of that length, the values from 0 on.
    static TableImage chainsOf(std::uint32_t length, std::uint32_t count)
    {
        TableImage table = TableImage::of("std::int32_t", 4).buckets(count).slots(length * count);
        for (std::uint32_t slot = 0; slot < length * count; ++slot) {
            table.slotImages[slot].value = bytesOf(slot);
            table.slotImages[slot].next.value = (slot + 1) % length == 0 ? noSlot : slot + 1;
        }
        for (std::uint32_t bucket = 0; bucket < count; ++bucket) {
            table.bucketLinks[bucket].value = bucket * length;
        }
        return table;
    }

    ScriptedBatchHandler batchHandler{4};
};

}  // namespace QuaskTesting
