#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/shared_store.h"
#include "support/table_layout.h"
#include "support/table_writer.h"

namespace QuaskTesting {

// One store of a writer, so that it can be made again: the bytes that went to `offset` of the file,
// or, without bytes, the length that the file was given.
struct StoreStep
{
    TableFile file;
    std::uint64_t offset;
    std::string bytes = {};

    // Who sees the store sees the stores before it, too; whether that is its own doing, or that of
    // a fence between it and the store before it, which works for all stores after the fence.
    bool released = false;
    bool fenced = false;

    bool lengthens() const { return bytes.empty(); }

    // The same store; how it is ordered does not count.
    bool operator==(StoreStep const& other) const
    {
        return file == other.file && offset == other.offset && bytes == other.bytes;
    }
};

// "slots@208: 0a000000", or "slots to 400 bytes".
std::ostream& operator<<(std::ostream& out, StoreStep const& step);

// Records the stores that this thread makes with `writer`, in their order, as long as it lives.
class StoreRecorder final : public StoreObserver
{
public:
    explicit StoreRecorder(TableWriter const& writer) : writer_(writer), observing_(*this) {}

    void beforeStore(void* address, std::size_t size, void const* bytes,
                     std::memory_order order) override;
    void beforeReleaseFence() override { fenced_ = true; }
    void beforeLengthen(std::uint64_t size) override;

    std::vector<StoreStep> steps;

private:
    void record(StoreStep step);

    TableWriter const& writer_;
    ObserveStores observing_;
    bool fenced_ = false;
};

// The stores of one operation, which is carried out.
template <typename Operation>
std::vector<StoreStep> storesOf(TableWriter const& writer, Operation&& operation)
{
    StoreRecorder recorder(writer);
    operation();
    return std::move(recorder.steps);
}

// The files of a table that is there, which can be put back to what they were and changed step by
// step: a writer that is stopped between two stores for as long as a test likes.
//
//     StoreReplay replay(directory);
//     auto const steps = storesOf(writer, [&] { writer.update(3, value); });
//     replay.restore();
//     for (auto const& step : steps) { replay.apply(step); ... }
//
// A step becomes visible in every mapping of the file as a whole, as long as it is one word and no
// other thread looks on; it lies inside the file. Files of more than 16 MiB and failures throw
// std::runtime_error.
class StoreReplay
{
public:
    // Keeps the present contents of the table's five files.
    explicit StoreReplay(std::string const& directory);
    StoreReplay(StoreReplay const&) = delete;
    StoreReplay& operator=(StoreReplay const&) = delete;
    ~StoreReplay();

    // Puts the kept contents back, lengths included. Who has mapped what is then after a file's
    // end must not touch it until the file is lengthened again.
    void restore();

    void apply(StoreStep const& step);

    // The present contents of a file.
    std::string contents(TableFile file) const;

private:
    struct Kept
    {
        int descriptor = -1;
        char* mapping = nullptr;  // of `reserve` bytes, however long the file is
        std::string contents;
    };
    static constexpr std::uint64_t reserve = 1 << 24;

    static std::uint64_t length(Kept const& file);
    static void setLength(Kept const& file, std::uint64_t length);
    Kept& kept(TableFile file) { return files_[static_cast<std::size_t>(file)]; }
    Kept const& kept(TableFile file) const { return files_[static_cast<std::size_t>(file)]; }

    std::array<Kept, allTableFiles.size()> files_;
};

}  // namespace QuaskTesting
