#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string_view>

namespace Dovan {

// While it lives, std::cout collects its text here and leaves the process in large writes. A piece
// that was written to std::cout with one call is never torn between the buffer and a later write
// unless it is larger than the buffer. One object at a time; one thread.
//
// Whoever ends the process without unwinding calls writeRemainder() first, so that what was printed
// before is on the output.
class StandardOutput final : public std::streambuf
{
public:
    // Writes to `descriptor`, which must stay open; it is not closed at the end.
    explicit StandardOutput(int descriptor);
    StandardOutput(StandardOutput const&) = delete;
    StandardOutput& operator=(StandardOutput const&) = delete;

    // Writes what is left, if it can be written, and gives std::cout its former buffer back.
    ~StandardOutput() override;

    // Writes what is left. False when this or any earlier write failed: text is then missing.
    bool finish();

    // The stream's StandardOutput, or null when it has another buffer.
    static StandardOutput* of(std::ostream& stream);

    // Memory behind what is collected so far, `size` bytes and at least `smallestRoom`, for text to
    // be built in and then given to append(). It stays readable as long as the object, but text
    // that is printed meanwhile may overwrite it.
    char* lendRoom(std::size_t& size)
    {
        if (epptr() - pptr() < smallestRoom) [[unlikely]] {
            flushBuffer();
        }
        size = static_cast<std::size_t>(epptr() - pptr());
        return pptr();
    }

    // Prints `text`; without copying it where it was built in the room lent last. (It is copied
    // when there was a flush in between, as every message on std::cerr brings one.)
    void append(std::string_view text)
    {
        if (text.data() == pptr()) [[likely]] {
            advance(text.size());
        } else {
            xsputn(text.data(), static_cast<std::streamsize>(text.size()));
        }
    }

    static constexpr std::ptrdiff_t smallestRoom = std::ptrdiff_t{16} * 1024;

    // For a signal handler: writes what the living object, if any, has collected. Safe at every
    // point of the program; text that was being written when the signal came is not written again.
    static void writeRemainder();

    // From now on SIGHUP, SIGINT and SIGTERM end the process as ever, but after writeRemainder(). A
    // second signal does not wait for a reader that takes nothing. One that is ignored stays so.
    static void writeRemainderOnTermination();

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(char const* text, std::streamsize count) override;
    int sync() override;

private:
    void advance(std::size_t count)
    {
        // A signal handler takes what lies before pptr(): the text first, then the pointer.
        std::atomic_signal_fence(std::memory_order_release);
        pbump(static_cast<int>(count));
    }

    bool writeOut(char const* text, std::size_t count);
    bool flushBuffer();

    static constexpr std::size_t capacity = std::size_t{256} * 1024;

    int const descriptor_;
    std::unique_ptr<char[]> const buffer_;
    std::streambuf* const former_;
    bool failed_ = false;
    bool volatile writing_ = false;  // read by a signal handler
};

}  // namespace Dovan
