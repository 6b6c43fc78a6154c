#pragma once

#include <atomic>
#include <csignal>
#include <cstddef>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string_view>

namespace Dovan {

// While it lives, std::cout collects its text here and leaves the process in large writes, of whole
// lines as long as a line fits into the buffer: the beginning of one stays here. Of a longer line
// each piece is written at once. So the descriptor shows a part of a line only during a write,
// within such a long line, and after a flush in the middle of a line.
//
// A pipe is made to hold as much as is written at once, if the system allows it; afterwards it
// keeps that size.
//
// Whoever ends the process without unwinding calls writeRemainder() first, so that the lines that
// were finished before are on the output.
//
// A write that fails is an error that finish() reports, also where a signal would end the process
// by default. But a reader of a pipe that has closed its end does end the process by SIGPIPE, if
// that signal had its default action; such a reader of another descriptor does not.
//
// One object at a time; one thread.
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

    // Memory of `size` bytes, at least `smallestRoom`, for text to be built in and then given to
    // append(). It stays readable as long as the object, but text that is printed in between may
    // overwrite it.
    char* lendRoom(std::size_t& size)
    {
        if (room() < smallestRoom) [[unlikely]] {
            return makeRoom(size);
        }
        size = room();
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

    static constexpr std::size_t smallestRoom = std::size_t{16} * 1024;

    // For a signal handler: writes the finished lines that the living object, if any, has
    // collected. Safe at every point of the program; text that was being written when the signal
    // came is not written again.
    static void writeRemainder();

    // From now on SIGHUP, SIGINT and SIGTERM end the process as Termination says, with nothing but
    // finished lines on the output unless its time is up before; and an exception that nothing
    // catches does so after writeRemainder(). To be called once.
    static void writeRemainderOnTermination();

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(char const* text, std::streamsize count) override;
    int sync() override;

private:
    void advance(std::size_t count)
    {
        // A signal handler takes what is before pptr(): the text first, then the pointer.
        std::atomic_signal_fence(std::memory_order_release);
        pbump(static_cast<int>(count));
    }

    std::size_t room() const { return static_cast<std::size_t>(epptr() - pptr()); }
    std::string_view collected() const { return {pbase(), pptr()}; }

    char* makeRoom(std::size_t& size);
    void flushLines();
    void flushAll();
    void writeOut(std::string_view text, std::string_view kept);
    void onWriteError();

    static constexpr std::size_t capacity = std::size_t{256} * 1024;

    int const descriptor_;
    std::unique_ptr<char[]> const buffer_;
    std::streambuf* const former_;
    struct sigaction formerOnPipe_;
    struct sigaction formerOnFileSize_;
    bool failed_ = false;

    // Set while the descriptor may show a part of a line. Read by a signal handler, which leaves
    // the object alone then. There is no put area as long as it is set and nothing is written.
    bool volatile lineOpen_ = false;
};

}  // namespace Dovan
