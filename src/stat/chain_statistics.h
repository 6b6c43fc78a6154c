#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace Quask::Stat {

// How long the chains of a table are. Memory is bounded by the number of different lengths. One
// thread.
class ChainStatistics
{
public:
    struct LongChain
    {
        std::uint64_t length;
        unsigned bucket;
        bool operator==(LongChain const&) const = default;
    };

    static constexpr std::size_t mostLongChains = 5;

    // Counts the chain of `bucket`, the buckets in ascending order.
    void add(std::uint64_t length, unsigned bucket);

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

    std::uint64_t buckets_ = 0;
    std::uint64_t elements_ = 0;
    double squares_ = 0;  // the sum of the lengths' squares
    std::array<std::uint64_t, 64> shortLengths_{};
    std::map<std::uint64_t, std::uint64_t> longLengths_;
    std::vector<LongChain> longest_;
};

}  // namespace Quask::Stat
