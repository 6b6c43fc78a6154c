#pragma once

#include <array>
#include <cstddef>
#include <cstring>

#include "report/chain_text.h"
#include "table/chain_batch.h"

namespace Quask {

// The heads of a batch's lines. Those of sixteen neighbouring buckets differ in their last digit
// only: they are written once, and the digit each time. One thread.
class BatchHeads
{
public:
    explicit BatchHeads(unsigned firstBucket) : firstGroup_(firstBucket / groupSize)
    {
        for (unsigned i = 0; i < groups_.size(); ++i) {
            Group& group = groups_[i];
            char* const end = ChainText::writeHead(group.text, (firstGroup_ + i) * groupSize);
            group.size = static_cast<std::size_t>(end - group.text);
        }
    }

    // Writes the head of a bucket of the batch; the address after it. Overwrites 16 characters.
    char* write(char* out, unsigned bucket) const
    {
        Group const& group = groups_[bucket / groupSize - firstGroup_];
        std::memcpy(out, group.text, sizeof group.text);
        out[group.size - 2] = "0123456789abcdef"[bucket % groupSize];
        return out + group.size;
    }

private:
    static constexpr unsigned groupSize = 16;

    struct Group
    {
        char text[16];  // "bucket[" and "]", with at most 8 digits between them
        std::size_t size;
    };

    unsigned firstGroup_;
    std::array<Group, ChainBatch::width / groupSize> groups_;
};

}  // namespace Quask
