#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace Dovan {

// Text that is built piece by piece, taken as a view and cleared, many million times per run. It
// keeps its memory when it is cleared, so that once it has grown to the longest text nothing is
// allocated, and never fills memory that is about to be overwritten. It may also be built in
// somebody else's memory, where it is needed in the end. One thread at a time.
class TextBuffer
{
public:
    bool empty() const { return end_ == text_; }
    std::size_t size() const { return static_cast<std::size_t>(end_ - text_); }

    // Valid until the next change of the buffer.
    std::string_view view() const { return {text_, size()}; }

    void clear() { end_ = text_; }

    // Drops the text; the next is built in the `capacity` bytes at `memory` as far as they suffice,
    // else it moves to memory of the buffer's own. They must stay until the next call of this.
    void useMemory(char* memory, std::size_t capacity)
    {
        text_ = memory;
        end_ = memory;
        limit_ = memory + capacity;
    }

    // Room for `count` more characters; the address to write them to. Nothing is added to the text
    // before advanceTo(). Throws std::bad_alloc.
    char* reserve(std::size_t count)
    {
        if (static_cast<std::size_t>(limit_ - end_) < count) [[unlikely]] {
            grow(count);
        }
        return end_;
    }

    // The text now ends at `end`, an address inside what the last reserve() gave.
    void advanceTo(char* end) { end_ = end; }

    // Both at once: the text now ends at `end`, and there is room for `count` more characters.
    char* reserveFrom(char* end, std::size_t count)
    {
        advanceTo(end);
        return reserve(count);
    }

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
    char* end_ = nullptr;    // of the text
    char* limit_ = nullptr;  // of the memory
    std::unique_ptr<char[]> own_;
    std::size_t ownCapacity_ = 0;
};

}  // namespace Dovan
