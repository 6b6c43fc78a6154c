#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "table/scan_handler.h"

namespace Quask::Stat {

// How long the chains of a table are: a handler of the walk that copies no values. A chain that had
// to be walked again is counted as it was the last time. Memory is bounded by the number of
// different lengths. One thread.
class ChainStatistics final : public ScanHandler
{
public:
    struct LongChain
    {
        std::uint64_t length;
        unsigned bucket;
        bool operator==(LongChain const&) const = default;
    };

    static constexpr std::size_t mostLongChains = 5;

    // `onProgress` is called with the number of buckets done, once for every few thousand of them.
    explicit ChainStatistics(std::function<void(unsigned bucketsDone)> onProgress = {})
        : onProgress_(std::move(onProgress))
    {}

    // All three always true.
    bool handleSlot(unsigned bucket, SlotRef const& ref, unsigned char* valueBytes, unsigned length,
                    bool lookaside, unsigned sequence) override;
    bool done(unsigned bucket, SlotRef const& ref) override;
    bool restart(unsigned bucket) override;

    // How many chains have each length, from 0 on; lengths that no chain has may be missing.
    std::map<std::uint64_t, std::uint64_t> lengths() const;

    // Those with the most elements, the longest first, of equal ones that of the first bucket. None
    // without elements.
    std::vector<LongChain> const& longest() const { return longest_; }

    std::uint64_t buckets() const { return buckets_; }
    std::uint64_t elements() const { return elements_; }
    std::uint64_t emptyBuckets() const { return shortLengths_[0]; }

    // Of the length of a chain; 0 without buckets.
    double mean() const;
    double deviation() const;

    // What an ideal hash would give with as many elements and buckets: each element in any bucket
    // with the same chance, so that lengths have Poisson's distribution.
    double idealDeviation() const;
    double idealEmptyBuckets() const;

private:
    void note(LongChain const& chain);

    std::function<void(unsigned bucketsDone)> const onProgress_;
    std::uint64_t length_ = 0;  // of the chain so far
    std::uint64_t buckets_ = 0;
    std::uint64_t elements_ = 0;
    double squares_ = 0;  // the sum of the lengths' squares
    std::array<std::uint64_t, 64> shortLengths_{};
    std::map<std::uint64_t, std::uint64_t> longLengths_;
    std::vector<LongChain> longest_;
};

}  // namespace Quask::Stat
