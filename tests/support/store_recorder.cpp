#include "support/store_recorder.h"

#include <ostream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/hex.h"

namespace QuaskTesting {
namespace {

void check(bool succeeded)
{
    if (!succeeded) {
        throw std::runtime_error("cannot replay a table's stores");
    }
}

void writeAt(int descriptor, std::string_view bytes, std::uint64_t offset)
{
    check(pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset)) ==
          static_cast<ssize_t>(bytes.size()));
}

}  // namespace

std::ostream& operator<<(std::ostream& out, StoreStep const& step)
{
    out << fileName(step.file);
    if (step.lengthens()) {
        return out << " to " << step.offset << " bytes";
    }
    return out << '@' << step.offset << ": "
               << Dovan::dumpHex(step.bytes.data(), static_cast<unsigned>(step.bytes.size()));
}

void StoreRecorder::beforeStore(void* address, std::size_t size, void const* bytes,
                                std::memory_order order)
{
    auto const [file, offset] = writer_.placeOf(address);
    StoreStep step{file, offset, std::string(static_cast<char const*>(bytes), size)};
    step.released = order != std::memory_order_relaxed;
    record(std::move(step));
}

void StoreRecorder::beforeLengthen(std::uint64_t size)
{
    record({TableFile::slots, size});
}

void StoreRecorder::record(StoreStep step)
{
    step.fenced = fenced_;
    fenced_ = false;
    steps.push_back(std::move(step));
}

StoreReplay::StoreReplay(std::string const& directory)
{
    for (TableFile const file : allTableFiles) {
        std::string const path = directory + "/" + fileName(file);
        kept(file).descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC);
        check(kept(file).descriptor >= 0);
        kept(file).contents = contents(file);
    }
}

StoreReplay::~StoreReplay()
{
    for (Kept const& file : files_) {
        close(file.descriptor);
    }
}

void StoreReplay::restore()
{
    for (Kept const& file : files_) {
        check(ftruncate(file.descriptor, static_cast<off_t>(file.contents.size())) == 0);
        writeAt(file.descriptor, file.contents, 0);
    }
}

void StoreReplay::apply(StoreStep const& step)
{
    int const descriptor = kept(step.file).descriptor;
    if (step.lengthens()) {
        check(ftruncate(descriptor, static_cast<off_t>(step.offset)) == 0);
    } else {
        writeAt(descriptor, step.bytes, step.offset);
    }
}

std::string StoreReplay::contents(TableFile file) const
{
    struct stat status = {};
    check(fstat(kept(file).descriptor, &status) == 0);
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    check(pread(kept(file).descriptor, bytes.data(), bytes.size(), 0) ==
          static_cast<ssize_t>(bytes.size()));
    return bytes;
}

}  // namespace QuaskTesting
