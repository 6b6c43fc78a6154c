#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Quask {

// The lines of one file after another, read through a buffer that is kept from file to file and
// grows only to hold the longest line. Made for the thousands of small files /proc/<pid>/maps: a
// file costs its open, its reads and its close. One thread at a time.
class MapsFile
{
public:
    MapsFile() = default;
    MapsFile(MapsFile const&) = delete;
    MapsFile& operator=(MapsFile const&) = delete;
    ~MapsFile();

    // Closes the former file and opens this one at its start; false when that fails.
    bool open(std::string const& path);

    bool isOpen() const { return descriptor_ >= 0; }

    void close();

    // The next line without its newline, valid until the next call; false at the end. A read that
    // fails or is interrupted is an end, too, and so is a last line that no newline ends: it may be
    // cut short.
    bool nextLine(std::string_view& line);

    // Why the file could not be opened, or not be read to its end: an errno; 0 when nothing failed.
    int error() const { return error_; }

private:
    bool readMore();

    int descriptor_ = -1;
    int error_ = 0;
    std::vector<char> buffer_;
    // buffer_[begin_, end_) has been read from the file and not yet been given out.
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

}  // namespace Quask
