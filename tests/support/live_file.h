#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

#include "support/shared_store.h"
#include "support/writable_file.h"

namespace QuaskTesting {

// A table file that a test changes in any way it likes, a sound one or not, while a reader has it
// mapped. Offsets are in bytes, of words aligned to their width; what is after the file's last
// page may be used as soon as the file is longer.
class LiveFile
{
public:
    explicit LiveFile(std::string const& path) : path_(path), file_(path), bytes_(file_.map(span))
    {}

    void store32(std::uint64_t offset, std::uint32_t word)
    {
        SharedStore::store32(bytes_ + offset, word, std::memory_order_release);
    }
    void store64(std::uint64_t offset, std::uint64_t word)
    {
        SharedStore::store64(bytes_ + offset, word, std::memory_order_release);
    }

    // Rewrites a pair {version, value}: the version goes up by one.
    void relink(std::uint64_t offset, std::uint32_t value)
    {
        SharedStore::relink(bytes_ + offset, value);
    }

    // Not in one step.
    void storeBytes(std::uint64_t offset, std::string_view bytes)
    {
        std::memcpy(bytes_ + offset, bytes.data(), bytes.size());
    }

    // Lengthens the file with zeros that need no memory, or cuts it.
    void resize(std::uint64_t size) { std::filesystem::resize_file(path_, size); }

private:
    static constexpr std::uint64_t span = 16 << 20;

    std::string path_;
    WritableFile file_;
    std::byte* bytes_;
};

}  // namespace QuaskTesting
