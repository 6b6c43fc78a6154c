#include "base/text_buffer.h"

#include <algorithm>

namespace Dovan {
namespace {

constexpr std::size_t smallestCapacity = 4096;

}  // namespace

void TextBuffer::grow(std::size_t count)
{
    if (text_ == own_.get() || ownCapacity_ < size_ + count) {
        ownCapacity_ = std::max({size_ + count, 2 * ownCapacity_, smallestCapacity});
        auto larger = std::make_unique_for_overwrite<char[]>(ownCapacity_);
        if (size_ != 0) {
            std::memcpy(larger.get(), text_, size_);
        }
        own_ = std::move(larger);
    } else {
        std::memcpy(own_.get(), text_, size_);
    }
    text_ = own_.get();
    capacity_ = ownCapacity_;
}

}  // namespace Dovan
