#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace QuaskTesting {

// A file that a test changes word by word while a reader has it mapped. Offsets are in bytes, of
// words aligned to their width; those behind the file's last page may be used once it is longer.
class LiveFile
{
public:
    explicit LiveFile(std::string const& path) : path_(path)
    {
        int const descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC);
        void* const address =
            mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        close(descriptor);
        if (address == MAP_FAILED) {
            throw std::runtime_error("cannot map " + path);
        }
        bytes_ = static_cast<std::byte*>(address);
    }
    LiveFile(LiveFile const&) = delete;
    LiveFile& operator=(LiveFile const&) = delete;
    ~LiveFile() { munmap(bytes_, span); }

    void store32(std::uint64_t offset, std::uint32_t word) { store(offset, word); }
    void store64(std::uint64_t offset, std::uint64_t word) { store(offset, word); }
    std::uint32_t load32(std::uint64_t offset) const { return load<std::uint32_t>(offset); }
    std::uint64_t load64(std::uint64_t offset) const { return load<std::uint64_t>(offset); }

    // Not in one step.
    void storeBytes(std::uint64_t offset, std::string_view bytes)
    {
        std::memcpy(bytes_ + offset, bytes.data(), bytes.size());
    }

    // Lengthens the file with zeros, or cuts it.
    void resize(std::uint64_t size) { std::filesystem::resize_file(path_, size); }

private:
    template <typename Word>
    void store(std::uint64_t offset, Word word)
    {
        std::atomic_ref<Word>(*reinterpret_cast<Word*>(bytes_ + offset)).store(word);
    }

    template <typename Word>
    Word load(std::uint64_t offset) const
    {
        return std::atomic_ref<Word>(*reinterpret_cast<Word*>(bytes_ + offset)).load();
    }

    static constexpr std::size_t span = 16 << 20;

    std::string path_;
    std::byte* bytes_ = nullptr;
};

}  // namespace QuaskTesting
