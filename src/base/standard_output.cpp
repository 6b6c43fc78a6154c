#include "base/standard_output.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>

#include <poll.h>
#include <unistd.h>

namespace Dovan {
namespace {

StandardOutput* volatile living = nullptr;

void waitUntilWritable(int descriptor)
{
    pollfd waited{descriptor, POLLOUT, 0};
    poll(&waited, 1, -1);
}

}  // namespace

StandardOutput::StandardOutput(int descriptor)
    : descriptor_(descriptor),
      buffer_(std::make_unique_for_overwrite<char[]>(capacity)),
      former_(std::cout.rdbuf(this))
{
    setp(buffer_.get(), buffer_.get() + capacity);
    living = this;
}

StandardOutput::~StandardOutput()
{
    finish();
    living = nullptr;
    std::cout.rdbuf(former_);
}

bool StandardOutput::finish()
{
    return flushBuffer() && !failed_;
}

StandardOutput* StandardOutput::of(std::ostream& stream)
{
    return dynamic_cast<StandardOutput*>(stream.rdbuf());
}

void StandardOutput::writeRemainder()
{
    StandardOutput* const output = living;
    if (output != nullptr && !output->writing_) {
        output->flushBuffer();
    }
}

void StandardOutput::writeRemainderOnTermination()
{
    for (int const number : {SIGHUP, SIGINT, SIGTERM}) {
        struct sigaction former
        {};
        sigaction(number, nullptr, &former);
        if (former.sa_handler != SIG_DFL) {
            continue;
        }
        struct sigaction action
        {};
        action.sa_handler = [](int signal) {
            writeRemainder();
            static_cast<void>(raise(signal));
        };
        action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER;
        sigemptyset(&action.sa_mask);
        sigaction(number, &action, nullptr);
    }
}

bool StandardOutput::writeOut(char const* text, std::size_t count)
{
    writing_ = true;
    while (count > 0 && !failed_) {
        ssize_t const written = write(descriptor_, text, count);
        if (written >= 0) {
            text += written;
            count -= static_cast<std::size_t>(written);
        } else if (errno == EAGAIN) {
            waitUntilWritable(descriptor_);
        } else {
            failed_ = errno != EINTR;
        }
    }
    writing_ = false;
    return !failed_;
}

bool StandardOutput::flushBuffer()
{
    bool const written = writeOut(pbase(), static_cast<std::size_t>(pptr() - pbase()));
    setp(buffer_.get(), buffer_.get() + capacity);
    return written;
}

StandardOutput::int_type StandardOutput::overflow(int_type c)
{
    if (!flushBuffer()) {
        return traits_type::eof();
    }
    if (traits_type::eq_int_type(c, traits_type::eof())) {
        return traits_type::not_eof(c);
    }
    return sputc(traits_type::to_char_type(c));
}

std::streamsize StandardOutput::xsputn(char const* text, std::streamsize count)
{
    auto const size = static_cast<std::size_t>(count);
    if (size > static_cast<std::size_t>(epptr() - pptr()) && !flushBuffer()) {
        return 0;
    }
    if (size > capacity) {
        return writeOut(text, size) ? count : 0;
    }
    // The text may lie in this very buffer, further back, if it was built in lent room.
    std::memmove(pptr(), text, size);
    advance(size);
    return count;
}

int StandardOutput::sync()
{
    return flushBuffer() ? 0 : -1;
}

}  // namespace Dovan
