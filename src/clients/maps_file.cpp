#include "clients/maps_file.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace Quask {
namespace {

// The kernel gives one page per read, however large the buffer.
constexpr std::size_t initialCapacity = std::size_t{16} * 1024;

}  // namespace

MapsFile::~MapsFile()
{
    close();
}

bool MapsFile::open(std::string const& path)
{
    close();
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    error_ = isOpen() ? 0 : errno;
    begin_ = end_ = 0;
    return isOpen();
}

void MapsFile::close()
{
    if (isOpen()) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

bool MapsFile::nextLine(std::string_view& line)
{
    std::size_t searched = 0;  // of the bytes not yet given out, those known to hold no newline
    for (;;) {
        char const* const start = buffer_.data() + begin_;
        std::string_view const unread(start, end_ - begin_);
        std::size_t const length = unread.find('\n', searched);
        if (length != std::string_view::npos) {
            line = unread.substr(0, length);
            begin_ += length + 1;
            return true;
        }
        searched = unread.size();
        if (!readMore()) {
            return false;
        }
    }
}

// Adds to the bytes not yet given out, which it moves to the start of the buffer.
bool MapsFile::readMore()
{
    if (!isOpen()) {
        return false;
    }
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (end_ == buffer_.size()) {
        buffer_.resize(buffer_.empty() ? initialCapacity : 2 * buffer_.size());
    }
    ssize_t const count = ::read(descriptor_, buffer_.data() + end_, buffer_.size() - end_);
    if (count <= 0) {
        error_ = count < 0 ? errno : 0;
        return false;
    }
    end_ += static_cast<std::size_t>(count);
    return true;
}

}  // namespace Quask
