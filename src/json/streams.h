#pragma once

#include <cstddef>
#include <memory>
#include <ostream>

// What a JsonWriter writes to. Both have reserve() and advanceTo() as a TextBuffer has them, and
// Put() and Flush() as RapidJSON asks for them.
namespace Quask::Json {

// A text in memory that has room for all of it, as its user makes sure. One thread.
class RoomyText
{
public:
    using Ch = char;

    // Where the text goes on; there is room.
    char* reserve(std::size_t /*count*/) const { return end_; }

    void advanceTo(char* end) { end_ = end; }
    void Put(char c) { *end_++ = c; }
    void Flush() {}

private:
    char* end_ = nullptr;
};

// How RapidJSON puts the characters of one string.
inline void PutReserve(RoomyText& /*text*/, std::size_t /*count*/) {}
inline void PutUnsafe(RoomyText& text, char c)
{
    text.Put(c);
}

// A text that goes to a stream in pieces: it is never all in memory. One that is not long goes
// there at once. One thread.
class PiecewiseText
{
public:
    using Ch = char;

    // `output` must outlive the object.
    explicit PiecewiseText(std::ostream& output)
        : out_(output), piece_(std::make_unique_for_overwrite<char[]>(capacity)), end_(piece_.get())
    {}

    // `count` is at most `capacity`.
    char* reserve(std::size_t count)
    {
        if (capacity - size() < count) {
            writeOut();
        }
        return end_;
    }

    void advanceTo(char* end) { end_ = end; }

    void Put(char c)
    {
        char* const end = reserve(1);
        *end = c;
        advanceTo(end + 1);
    }

    // RapidJSON calls it at the end of each document; nothing is to be done then.
    void Flush() {}

    // Writes what there is.
    void writeOut()
    {
        out_.write(piece_.get(), static_cast<std::streamsize>(size()));
        end_ = piece_.get();
    }

    static constexpr std::size_t capacity = std::size_t{64} * 1024;

private:
    std::size_t size() const { return static_cast<std::size_t>(end_ - piece_.get()); }

    std::ostream& out_;
    std::unique_ptr<char[]> const piece_;
    char* end_;
};

// No room is reserved for a whole string here.
inline void PutReserve(PiecewiseText& /*text*/, std::size_t /*count*/) {}
inline void PutUnsafe(PiecewiseText& text, char c)
{
    text.Put(c);
}

}  // namespace Quask::Json
