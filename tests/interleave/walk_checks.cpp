#include "interleave/walk_checks.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "base/hex.h"
#include "support/proving_values.h"
#include "support/table_layout.h"

namespace QuaskTesting {

WalkRecorder::WalkRecorder(ScheduledMemory const& memory, unsigned valueSize)
    : memory_(memory), buffer_(valueSize, '\0')
{
    data = reinterpret_cast<unsigned char*>(buffer_.data());
    size = valueSize;
}

bool WalkRecorder::handleSlot(unsigned bucket, Quask::SlotRef const& ref,
                              unsigned char* /*valueBytes*/, unsigned /*length*/,
                              bool /*lookaside*/, unsigned /*sequence*/)
{
    slotStart_ = elements_.empty() ? loadOfHead(bucket) : slotStart_;
    elements_.push_back({ref.index, buffer_, slotStart_, memory_.loads() - 1});
    slotStart_ = memory_.loads();
    return true;
}

bool WalkRecorder::done(unsigned bucket, Quask::SlotRef const& /*ref*/)
{
    chains_.push_back({bucket, loadOfHead(bucket), memory_.loads() - 1, std::move(elements_)});
    elements_.clear();
    return true;
}

bool WalkRecorder::restart(unsigned /*bucket*/)
{
    elements_.clear();
    return true;
}

std::size_t WalkRecorder::loadOfHead(unsigned bucket) const
{
    return memory_.lastLoadOf({TableFile::buckets, BucketsOffset::link(bucket), 8},
                              memory_.loads());
}

bool BatchRecorder::handleBatch(Quask::ChainBatch const& batch)
{
    ++batches_;
    for (unsigned i = 0; i < batch.bucketCount(); ++i) {
        unsigned const bucket = batch.firstBucket() + i;
        chains_.push_back({bucket, loadOfHead(bucket), loadOfHead(bucket), {}});
    }
    batch.forEach([&](Quask::BatchElement const& element) {
        WalkedChain& chain = chains_.at(element.bucket);
        Place link{TableFile::buckets, BucketsOffset::link(element.bucket), 8};
        if (!chain.elements.empty()) {
            link = {TableFile::slots,
                    SlotsOffset::slot(slotSizeFor(size), chain.elements.back().slot), 8};
        }
        chain.elements.push_back(readBy(element, link));
        chain.lastLoad = chain.elements.back().lastLoad;
    });
    return true;
}

WalkedElement BatchRecorder::readBy(Quask::BatchElement const& element, Place const& link) const
{
    std::uint64_t const slot = SlotsOffset::slot(slotSizeFor(size), element.ref.index);
    Place const sequence{TableFile::slots, slot + RecordOffset::sequence, 4};
    std::size_t const last = memory_.lastLoadOf({link.file, link.offset, 4}, memory_.loads());
    std::size_t const first = memory_.lastLoadOf(sequence, memory_.lastLoadOf(sequence, last));
    return {element.ref.index, {reinterpret_cast<char const*>(element.value), size}, first, last};
}

namespace {

std::string textOf(std::string const& value)
{
    if (auto const proven = provenBy(value)) {
        return "element " + std::to_string(proven->key) + " of generation " +
               std::to_string(proven->generation);
    }
    return "the value " + Dovan::dumpHex(value.data(), static_cast<unsigned>(value.size()));
}

std::string violationIn(ScheduledMemory const& memory, std::uint32_t bucket,
                        WalkedElement const& element)
{
    std::ostringstream violation;
    Moments const moments = memory.history().momentsOf(bucket, element.slot, element.value);
    memory.forTightestSpans(element.firstLoad, element.lastLoad, [&](Moment first, Moment last) {
        if ((moments & between(first, last)) == 0) {
            violation.str({});
            violation << textOf(element.value) << " was read in slot " << element.slot
                      << " of bucket " << bucket << " from moment " << first << " to " << last
                      << ", but was there " << (moments == 0 ? "never" : "only before or after");
        }
    });
    return violation.str();
}

std::size_t countOf(std::uint32_t key, WalkedChain const& chain)
{
    return static_cast<std::size_t>(
        std::count_if(chain.elements.begin(), chain.elements.end(), [&](auto const& element) {
            auto const proven = provenBy(element.value);
            return proven && proven->key == key;
        }));
}

std::string violationIn(ScheduledMemory const& memory, WalkedChain const& chain)
{
    for (WalkedElement const& element : chain.elements) {
        std::string violation = violationIn(memory, chain.bucket, element);
        if (!violation.empty()) {
            return violation;
        }
    }
    for (auto const& presence : memory.history().presences()) {
        if (presence.bucket != chain.bucket) {
            continue;
        }
        std::size_t const count = countOf(presence.key, chain);
        bool missed = false;
        memory.forTightestSpans(chain.firstLoad, chain.lastLoad, [&](Moment first, Moment last) {
            Moments const span = between(first, last);
            missed |= count == 0 && (presence.moments & span) == span;
        });
        if (missed || count > 1) {
            return "element " + std::to_string(presence.key) + " was found " +
                   std::to_string(count) + " times in bucket " + std::to_string(chain.bucket);
        }
    }
    return {};
}

}  // namespace

std::string violationIn(ScheduledMemory const& memory, std::vector<WalkedChain> const& chains,
                        std::uint32_t bucketCount)
{
    if (chains.size() != bucketCount) {
        return std::to_string(chains.size()) + " chains were finished, not " +
               std::to_string(bucketCount);
    }
    for (std::uint32_t bucket = 0; bucket < bucketCount; ++bucket) {
        std::string violation = chains[bucket].bucket == bucket
                                    ? violationIn(memory, chains[bucket])
                                    : "the chains were finished out of order";
        if (!violation.empty()) {
            return violation;
        }
    }
    return {};
}

}  // namespace QuaskTesting
