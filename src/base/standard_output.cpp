#include "base/standard_output.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <iostream>

#include <fcntl.h>

#include "base/termination.h"
#include "base/write_all.h"

namespace Dovan {
namespace {

StandardOutput* volatile living = nullptr;

// The text up to the last newline, that included. memrchr() looks at many bytes at a time; a piece
// of a long line has no newline.
std::string_view linesOf(std::string_view text)
{
    auto const* const last = static_cast<char const*>(memrchr(text.data(), '\n', text.size()));
    return last == nullptr ? std::string_view() : std::string_view(text.data(), last + 1);
}

// What the signal did before.
struct sigaction ignore(int signal)
{
    struct sigaction ignoring
    {};
    ignoring.sa_handler = SIG_IGN;
    struct sigaction former
    {};
    sigaction(signal, &ignoring, &former);
    return former;
}

// Lets a pipe hold `size` bytes at least, so that its reader is at work while the next text is
// being made. Where that is refused, or the descriptor is not a pipe, all stays as it is.
void enlargePipe(int descriptor, int size)
{
    int const former = fcntl(descriptor, F_GETPIPE_SZ);
    if (former != -1 && former < size) {
        fcntl(descriptor, F_SETPIPE_SZ, size);
    }
}

}  // namespace

StandardOutput::StandardOutput(int descriptor)
    : descriptor_(descriptor),
      buffer_(std::make_unique_for_overwrite<char[]>(capacity)),
      former_(std::cout.rdbuf(this)),
      formerOnPipe_(ignore(SIGPIPE)),
      formerOnFileSize_(ignore(SIGXFSZ))
{
    enlargePipe(descriptor, capacity);
    setp(buffer_.get(), buffer_.get() + capacity);
    living = this;
}

StandardOutput::~StandardOutput()
{
    finish();
    living = nullptr;
    std::cout.rdbuf(former_);
    sigaction(SIGPIPE, &formerOnPipe_, nullptr);
    sigaction(SIGXFSZ, &formerOnFileSize_, nullptr);
}

bool StandardOutput::finish()
{
    flushAll();
    return !failed_;
}

StandardOutput* StandardOutput::of(std::ostream& stream)
{
    return dynamic_cast<StandardOutput*>(stream.rdbuf());
}

void StandardOutput::writeRemainder()
{
    StandardOutput* const output = living;
    if (output != nullptr && !output->lineOpen_) {
        output->flushLines();
    }
}

void StandardOutput::writeRemainderOnTermination()
{
    Termination::prepare([] {
        StandardOutput const* const output = living;
        if (output != nullptr && output->lineOpen_) {
            return false;
        }
        writeRemainder();
        return true;
    });
    static std::terminate_handler const former = std::set_terminate([] {
        writeRemainder();
        former();
    });
}

// Writes `text`, which is collected or somebody else's, and keeps `kept` collected, which is after
// all other collected text. The object is consistent when lineOpen_ is reset, and not before.
void StandardOutput::writeOut(std::string_view text, std::string_view kept)
{
    if (text.empty()) {
        return;
    }
    lineOpen_ = true;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    if (!failed_ && !writeAll(descriptor_, text)) {
        onWriteError();
    }
    char* const begin = buffer_.get();
    char* const end = begin + capacity;
    if (text.back() != '\n' && !failed_) {
        setp(end, end);
        return;
    }
    if (!kept.empty()) {
        std::memmove(begin, kept.data(), kept.size());
    }
    setp(begin, end);
    pbump(static_cast<int>(kept.size()));
    std::atomic_signal_fence(std::memory_order_seq_cst);
    lineOpen_ = false;
    Termination::endIfDue();
}

void StandardOutput::onWriteError()
{
    failed_ = true;
    if (errno == EPIPE && formerOnPipe_.sa_handler == SIG_DFL) {
        sigaction(SIGPIPE, &formerOnPipe_, nullptr);
        static_cast<void>(raise(SIGPIPE));
    }
}

void StandardOutput::flushLines()
{
    std::string_view const lines = linesOf(collected());
    writeOut(lines, collected().substr(lines.size()));
}

void StandardOutput::flushAll()
{
    flushLines();
    writeOut(collected(), {});
}

char* StandardOutput::makeRoom(std::size_t& size)
{
    flushLines();
    if (room() < smallestRoom) {
        flushAll();
    }
    size = lineOpen_ ? capacity : room();
    return lineOpen_ ? buffer_.get() : pptr();
}

StandardOutput::int_type StandardOutput::overflow(int_type c)
{
    char const one = traits_type::to_char_type(c);
    return xsputn(&one, 1) == 1 ? c : traits_type::eof();
}

std::streamsize StandardOutput::xsputn(char const* text, std::streamsize count)
{
    std::string_view rest(text, static_cast<std::size_t>(count));
    if (rest.size() > room()) {
        flushLines();
    }
    while (rest.size() > room()) {
        flushAll();
        std::string_view const lines = linesOf(rest);
        std::string_view const piece = lines.empty() ? rest : lines;
        writeOut(piece, {});
        rest.remove_prefix(piece.size());
    }
    // The text may be in this very buffer, further back, if it was built in lent room.
    std::memmove(pptr(), rest.data(), rest.size());
    advance(rest.size());
    return failed_ ? 0 : count;
}

int StandardOutput::sync()
{
    flushAll();
    return failed_ ? -1 : 0;
}

}  // namespace Dovan
