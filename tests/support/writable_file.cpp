#include "support/writable_file.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/shared_store.h"

namespace QuaskTesting {
namespace {

[[noreturn]] void fail(int error, std::string const& what)
{
    throw std::system_error(error, std::generic_category(), what);
}

}  // namespace

WritableFile::WritableFile(std::string const& path)
    : path_(path), descriptor_(open(path.c_str(), O_RDWR | O_CLOEXEC))
{
    if (descriptor_ < 0) {
        fail(errno, "cannot open " + path_);
    }
}

WritableFile::~WritableFile()
{
    if (address_ != nullptr) {
        munmap(address_, span_);
    }
    close(descriptor_);
}

std::byte* WritableFile::map(std::uint64_t span)
{
    void* const address = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_, 0);
    if (address == MAP_FAILED) {
        fail(errno, "cannot map " + path_);
    }
    address_ = static_cast<std::byte*>(address);
    span_ = span;
    return address_;
}

void WritableFile::lengthen(std::uint64_t size)
{
    std::uint64_t const present = this->size();
    if (size <= present) {
        return;
    }
    if (storeObserver != nullptr) {
        storeObserver->beforeLengthen(size);
    }
    // Not ftruncate: a full device then shows here and not as a bus error at some later store.
    int const error = posix_fallocate(descriptor_, static_cast<off_t>(present),
                                      static_cast<off_t>(size - present));
    if (error != 0) {
        fail(error, "cannot lengthen " + path_);
    }
}

std::uint64_t WritableFile::size() const
{
    struct stat status = {};
    if (fstat(descriptor_, &status) != 0) {
        fail(errno, "cannot examine " + path_);
    }
    return static_cast<std::uint64_t>(status.st_size);
}

std::uint32_t WritableFile::read32(std::uint64_t offset) const
{
    std::uint32_t word = 0;
    ssize_t const got = pread(descriptor_, &word, sizeof word, static_cast<off_t>(offset));
    if (got != sizeof word) {
        fail(got < 0 ? errno : EINVAL, "cannot read the header of " + path_);
    }
    return word;
}

}  // namespace QuaskTesting
