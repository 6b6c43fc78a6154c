#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace Dovan {

// Text that is built piece by piece, taken as a view and cleared, many million times a run. It
// keeps its memory when it is cleared, so that once it has grown to the longest text nothing is
// allocated, and never fills memory that is about to be overwritten. One thread at a time.
class TextBuffer
{
public:
    bool empty() const { return size_ == 0; }
    std::size_t size() const { return size_; }

    // Valid until the next change of the buffer.
    std::string_view view() const { return {text_.get(), size_}; }

    void clear() { size_ = 0; }

    // Room for `count` more characters; the address to write them to. Nothing is added to the text
    // before advanceTo(). Throws std::bad_alloc.
    char* reserve(std::size_t count)
    {
        if (capacity_ - size_ < count) [[unlikely]] {
            grow(count);
        }
        return text_.get() + size_;
    }

    // The text now ends at `end`, an address inside what the last reserve() gave.
    void advanceTo(char const* end) { size_ = static_cast<std::size_t>(end - text_.get()); }

    void append(char c)
    {
        char* const end = reserve(1);
        *end = c;
        advanceTo(end + 1);
    }

    void append(std::string_view text)
    {
        char* const end = reserve(text.size());
        std::memcpy(end, text.data(), text.size());
        advanceTo(end + text.size());
    }

private:
    void grow(std::size_t count);

    std::unique_ptr<char[]> text_ = std::make_unique_for_overwrite<char[]>(initialCapacity);
    std::size_t size_ = 0;
    std::size_t capacity_ = initialCapacity;

    static constexpr std::size_t initialCapacity = 4096;
};

}  // namespace Dovan
