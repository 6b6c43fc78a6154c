#include "interleave/walk_checks.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "base/hex.h"
#include "support/proving_values.h"

namespace QuaskTesting {

WalkRecorder::WalkRecorder(ScheduledMemory const& memory, unsigned valueSize)
    : memory_(memory), buffer_(valueSize, '\0')
{
    data = reinterpret_cast<unsigned char*>(buffer_.data());
    size = valueSize;
}

bool WalkRecorder::handleSlot(unsigned /*bucket*/, Quask::SlotRef const& ref,
                              unsigned char* /*valueBytes*/, unsigned /*length*/,
                              bool /*lookaside*/, unsigned /*sequence*/)
{
    elements_.push_back({ref.index, buffer_, slotStart_, memory_.loads() - 1});
    slotStart_ = memory_.loads();
    return true;
}

bool WalkRecorder::done(unsigned bucket, Quask::SlotRef const& /*ref*/)
{
    chains_.push_back({bucket, chainStart_, memory_.loads() - 1, std::move(elements_)});
    elements_.clear();
    chainStart_ = slotStart_ = memory_.loads();
    return true;
}

bool WalkRecorder::restart(unsigned /*bucket*/)
{
    elements_.clear();
    chainStart_ = slotStart_ = memory_.loads();
    return true;
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
