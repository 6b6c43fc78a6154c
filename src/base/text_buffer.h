#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace Dovan {

// Text that is built piece by piece, taken as a view and cleared, many million times a run. It
// keeps its memory when it is cleared, so that once it has grown to the longest text nothing is
// allocated, // and never fills memory that is about to be overwritten. It may also be built in
// memory of somebody else's, where it is wanted in the end. One thread at a time.
class TextBuffer
{
public:
    bool empty() const { return size_ == 0; }
    std::size_t size() const { return size_; }

    // Valid until the next change of the buffer.
    std::string_view view() const { return {text_, size_}; }

    void clear() { size_ = 0; }

    // Drops the text; the next is built in the `capacity` bytes at `memory` as far as they suffice,
    // else it moves to memory of the buffer's own. They must stay until the next call of this.
    void useMemory(char* memory, std::size_t capacity)
    {
        text_ = memory;
        capacity_ = capacity;
        size_ = 0;
    }

    // Room for `count` more characters; the address to write them to. Nothing is added to the text
    // before advanceTo(). Throws std::bad_alloc.
    char* reserve(std::size_t count)
    {
        if (capacity_ - size_ < count) [[unlikely]] {
            grow(count);
        }
        return text_ + size_;
    }

    // The text now ends at `end`, an address inside what the last reserve() gave.
    void advanceTo(char const* end) { size_ = static_cast<std::size_t>(end - text_); }

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

    char* text_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
    std::unique_ptr<char[]> own_;
    std::size_t ownCapacity_ = 0;
};

}  // namespace Dovan
