#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "base/hex.h"
#include "table/chain_batch.h"
#include "table/scan_handler.h"

namespace QuaskTesting {

// Notes each call of a walk as a line, and lets a test act in the middle of the walk. What is zero
// is left away:
//
//     "0: slot 3 v5 01000000 s8"     a slot of bucket 0: index, version of the link that led to it,
//                                    value, state word
//     "0: slot 3 01000000 s2 *"      its value taken from the lookaside slot
//     "0: restart"
//     "0: done v6"                   with the version of the link that ended the chain
//
// handleSlot is called when the slot's next link has been loaded, before that link is followed.
class ScriptedHandler : public Quask::ScanHandler
{
public:
    explicit ScriptedHandler(unsigned valueSize) { setSize(valueSize); }
    ScriptedHandler(ScriptedHandler const&) = delete;
    ScriptedHandler& operator=(ScriptedHandler const&) = delete;

    // The buffer's length, which is 1 at least: an address is always there.
    void setSize(unsigned bytes)
    {
        buffer_.assign(bytes + 1, 0);
        data = buffer_.data();
        size = bytes;
    }

    // Carries out `action` at the first call that gives this line.
    void when(std::string const& line, std::function<void()> action)
    {
        actions_[line] = std::move(action);
    }

    bool done(unsigned bucket, Quask::SlotRef const& ref) override
    {
        EXPECT_EQ(ref.index, Quask::SlotRef::null);
        return note(lineOfEnd(bucket, ref));
    }

    bool handleSlot(unsigned bucket, Quask::SlotRef const& ref, unsigned char* valueBytes,
                    unsigned length, bool lookaside, unsigned sequence) override
    {
        EXPECT_EQ(valueBytes, data);
        EXPECT_EQ(length, size);
        return note(lineOfSlot(bucket, ref, valueBytes, sequence) + (lookaside ? " *" : ""));
    }

    bool restart(unsigned bucket) override { return note(std::to_string(bucket) + ": restart"); }

    std::vector<std::string> lines;
    std::string stopAt;  // the call that gives this line returns false

protected:
    std::string lineOfSlot(unsigned bucket, Quask::SlotRef const& ref,
                           unsigned char const* valueBytes, unsigned sequence) const
    {
        return std::to_string(bucket) + ": slot " + std::to_string(ref.index) +
               unlessZero(" v", ref.version) + (size == 0 ? "" : " ") +
               Dovan::dumpHex(valueBytes, size) + unlessZero(" s", sequence);
    }

    static std::string lineOfEnd(unsigned bucket, Quask::SlotRef const& ref)
    {
        return std::to_string(bucket) + ": done" + unlessZero(" v", ref.version);
    }

    static std::string unlessZero(std::string const& prefix, unsigned number)
    {
        return number == 0 ? "" : prefix + std::to_string(number);
    }

    bool note(std::string const& line)
    {
        lines.push_back(line);
        if (auto const found = actions_.find(line); found != actions_.end()) {
            std::function<void()> const action = std::move(found->second);
            actions_.erase(found);
            action();
        }
        return line != stopAt;
    }

private:
    std::vector<unsigned char> buffer_;
    std::map<std::string, std::function<void()>> actions_;
};

// Takes batches, too. Of each it notes what it is and then its elements, as if they had come in
// calls, but for the ends of empty buckets:
//
//     "batch 0-63"
//     "0: slot 3 v5 01000000 s8"
//     "0: done v6"
class ScriptedBatchHandler final : public ScriptedHandler
{
public:
    using ScriptedHandler::ScriptedHandler;

    bool handleBatch(Quask::ChainBatch const& batch)
    {
        unsigned const last = batch.firstBucket() + batch.bucketCount() - 1;
        bool const goesOn =
            note("batch " + std::to_string(batch.firstBucket()) + "-" + std::to_string(last));
        unsigned elements = 0;
        unsigned isFirst = 1;
        batch.forEach([&](Quask::BatchElement const& element) {
            EXPECT_EQ(element.isFirst, isFirst);
            EXPECT_EQ(element.isLast, element.next.isNull() ? 1u : 0u);
            note(lineOfSlot(element.bucket, element.ref, element.value, element.sequence));
            if (element.isLast != 0) {
                note(lineOfEnd(element.bucket, element.next));
            }
            isFirst = element.isLast;
            ++elements;
        });
        EXPECT_EQ(elements, batch.size());
        return goesOn;
    }
};

}  // namespace QuaskTesting
