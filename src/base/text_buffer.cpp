#include "base/text_buffer.h"

#include <algorithm>

namespace Dovan {

void TextBuffer::grow(std::size_t count)
{
    std::size_t const capacity = std::max(size_ + count, 2 * capacity_);
    auto larger = std::make_unique_for_overwrite<char[]>(capacity);
    std::memcpy(larger.get(), text_.get(), size_);
    text_ = std::move(larger);
    capacity_ = capacity;
}

}  // namespace Dovan
