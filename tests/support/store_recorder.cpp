#include "support/store_recorder.h"

#include <ostream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/mman.h>
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
    for (TableFile const each : allTableFiles) {
        Kept& file = kept(each);
        std::string const path = directory + "/" + fileName(each);
        file.descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC);
        check(file.descriptor >= 0);
        void* const mapping =
            mmap(nullptr, reserve, PROT_READ | PROT_WRITE, MAP_SHARED, file.descriptor, 0);
        check(mapping != MAP_FAILED);
        file.mapping = static_cast<char*>(mapping);
        file.contents = contents(each);
    }
}

StoreReplay::~StoreReplay()
{
    for (Kept const& file : files_) {
        munmap(file.mapping, reserve);
        close(file.descriptor);
    }
}

std::uint64_t StoreReplay::length(Kept const& file)
{
    struct stat status = {};
    check(fstat(file.descriptor, &status) == 0 &&
          static_cast<std::uint64_t>(status.st_size) <= reserve);
    return static_cast<std::uint64_t>(status.st_size);
}

void StoreReplay::setLength(Kept const& file, std::uint64_t length)
{
    if (length != StoreReplay::length(file)) {
        check(length <= reserve && ftruncate(file.descriptor, static_cast<off_t>(length)) == 0);
    }
}

void StoreReplay::restore()
{
    for (Kept const& file : files_) {
        setLength(file, file.contents.size());
        file.contents.copy(file.mapping, file.contents.size());
    }
}

void StoreReplay::apply(StoreStep const& step)
{
    Kept const& file = kept(step.file);
    if (step.lengthens()) {
        setLength(file, step.offset);
    } else {
        check(step.offset + step.bytes.size() <= reserve);
        step.bytes.copy(file.mapping + step.offset, step.bytes.size());
    }
}

std::string StoreReplay::contents(TableFile file) const
{
    return {kept(file).mapping, length(kept(file))};
}

}  // namespace QuaskTesting
