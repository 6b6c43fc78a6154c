#include "support/regular_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/mem_local.h"
#include "support/open_without_links.h"

namespace Mem {
namespace {

using Dovan::Descriptor;

// Opens what the name leads to; none, with the reason in `failure`, when that fails or it is not a
// regular file.
Descriptor open(std::string const& path, int flags, std::string& failure)
{
    struct stat status = {};
    Descriptor opened = openWithoutLinks(path, flags);
    if (!opened.isOpen() || fstat(opened.number(), &status) != 0) {
        failure = std::strerror(errno);
        return {};
    }
    if (!S_ISREG(status.st_mode)) {
        failure = S_ISLNK(status.st_mode) ? std::strerror(ELOOP) : "Not a regular file";
        return {};
    }
    return opened;
}

}  // namespace

RegularFile RegularFile::examine(std::string const& path, std::string& failure)
{
    return RegularFile(open(path, O_PATH, failure));
}

RegularFile RegularFile::openForReading(std::string const& path, std::string& failure)
{
    // Its kind is asked first, without opening it for anything. What the name leads to may change
    // in between, which is what the second look is for.
    if (!examine(path, failure).isOpen()) {
        return {};
    }
    return RegularFile(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY, failure));
}

unsigned RegularFile::size() const
{
    struct stat status = {};
    if (!isOpen() || fstat(descriptor(), &status) != 0) {
        return 0;
    }
    constexpr off_t largest = std::numeric_limits<unsigned>::max();
    return static_cast<unsigned>(std::min(status.st_size, largest));
}

ByteRange RegularFile::nextData(ByteRange range) const
{
    off_t const data = lseek(descriptor(), static_cast<off_t>(range.begin), SEEK_DATA);
    if (data < 0) {
        // ENXIO: there are only holes up to the end of the file.
        std::size_t const fileEnd = errno == ENXIO ? roundUpToPages(size()) : 0;
        return {std::clamp(fileEnd, range.begin, range.end), range.end};
    }
    off_t const hole = lseek(descriptor(), data, SEEK_HOLE);
    std::size_t const dataEnd = hole < 0 ? range.end : static_cast<std::size_t>(hole);
    return {std::min(static_cast<std::size_t>(data), range.end), std::min(dataEnd, range.end)};
}

bool RegularFile::isNamed(std::string const& path) const
{
    struct stat named = {};
    struct stat status = {};
    return lstat(path.c_str(), &named) == 0 && fstat(descriptor(), &status) == 0 &&
           named.st_dev == status.st_dev && named.st_ino == status.st_ino;
}

}  // namespace Mem
