#include "stat/chain_statistics.h"

#include <algorithm>
#include <cmath>

namespace Quask::Stat {

void ChainStatistics::add(std::uint64_t length, unsigned bucket)
{
    if (length < shortLengths_.size()) {
        ++shortLengths_[length];
    } else {
        ++longLengths_[length];
    }
    if (length > 0) {
        note({length, bucket});
    }
    ++buckets_;
    elements_ += length;
    squares_ += static_cast<double>(length) * static_cast<double>(length);
}

void ChainStatistics::note(LongChain const& chain)
{
    if (longest_.size() == mostLongChains && chain.length <= longest_.back().length) {
        return;
    }
    auto const place = std::ranges::find_if(
        longest_, [&chain](LongChain const& other) { return other.length < chain.length; });
    longest_.insert(place, chain);
    if (longest_.size() > mostLongChains) {
        longest_.pop_back();
    }
}

std::map<std::uint64_t, std::uint64_t> ChainStatistics::lengths() const
{
    std::map<std::uint64_t, std::uint64_t> all = longLengths_;
    for (std::size_t length = 0; length < shortLengths_.size(); ++length) {
        if (shortLengths_[length] != 0) {
            all.emplace(length, shortLengths_[length]);
        }
    }
    return all;
}

double ChainStatistics::mean() const
{
    return buckets_ == 0 ? 0 : static_cast<double>(elements_) / static_cast<double>(buckets_);
}

double ChainStatistics::deviation() const
{
    if (buckets_ == 0) {
        return 0;
    }
    // The difference may come out a little below 0 when all lengths are the same.
    return std::sqrt(std::max(0.0, squares_ / static_cast<double>(buckets_) - mean() * mean()));
}

double ChainStatistics::idealDeviation() const
{
    return std::sqrt(mean());
}

double ChainStatistics::idealEmptyBuckets() const
{
    return static_cast<double>(buckets_) * std::exp(-mean());
}

}  // namespace Quask::Stat
