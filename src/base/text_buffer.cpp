#include "base/text_buffer.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Dovan {
namespace {

constexpr std::size_t smallestCapacity = 4096;

}  // namespace

void TextBuffer::grow(std::size_t count)
{
    std::size_t const length = size();
    if (text_ == own_.get() || ownCapacity_ < length + count) {
        ownCapacity_ = std::max({length + count, 2 * ownCapacity_, smallestCapacity});
        auto larger = std::make_unique_for_overwrite<char[]>(ownCapacity_);
        if (length != 0) {
            std::memcpy(larger.get(), text_, length);
        }
        own_ = std::move(larger);
    } else {
        std::memcpy(own_.get(), text_, length);
    }
    text_ = own_.get();
    end_ = text_ + length;
    limit_ = text_ + ownCapacity_;
}

}  // namespace Dovan
