#include "report/kept_chain.h"

#include <new>
#include <utility>

namespace Quask {

KeptChain::KeptChain(Dovan::ZeroedBytes valueBuffer, unsigned valueSize, std::size_t bufferSize,
                     bool showEmpty, QuaskReaderGeneric const& reader)
    : bufferSize_(bufferSize), printEmpty_(showEmpty), reader_(reader)
{
    size = valueSize;
    elements_.push_back({std::move(valueBuffer)});
    setCount(0);
}

bool KeptChain::handleSlot(unsigned /*bucket*/, SlotRef const& ref, unsigned char* /*valueBytes*/,
                           unsigned /*length*/, bool lookaside, unsigned /*sequence*/)
{
    elements_[count_].index = ref.index;
    elements_[count_].lookaside = lookaside;
    setCount(count_ + 1);
    reader_.letSlotsGo();
    return true;
}

void KeptChain::setCount(std::size_t count)
{
    if (count == elements_.size()) {
        // It takes no memory until there is an element for it.
        Dovan::ZeroedBytes buffer = Dovan::allocateZeroed(bufferSize_);
        if (buffer == nullptr) {
            throw std::bad_alloc();
        }
        elements_.push_back({std::move(buffer)});
    }
    count_ = count;
    data = elements_[count].bytes.get();
}

bool KeptChain::done(unsigned bucket, SlotRef const& /*ref*/)
{
    if (count_ != 0 || printEmpty_) {
        write(bucket, std::span(elements_).first(count_));
    }
    setCount(0);
    return true;
}

bool KeptChain::restart(unsigned /*bucket*/)
{
    setCount(0);
    return true;
}

}  // namespace Quask
