#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace QuaskTesting {

// A table file that exists, open and mapped for reading and writing. Every failure throws
// std::system_error.
class WritableFile
{
public:
    explicit WritableFile(std::string const& path);
    WritableFile(WritableFile const&) = delete;
    WritableFile& operator=(WritableFile const&) = delete;
    ~WritableFile();

    // Maps the first `span` bytes, once. The file may be shorter: what is after its last page
    // may be touched as soon as the file has been lengthened, so the mapping never has to move.
    std::byte* map(std::uint64_t span);

    // Makes the file at least `size` bytes long, zeros after what it had, all of it in memory. A
    // store observer is called before that.
    void lengthen(std::uint64_t size);

    std::uint64_t size() const;
    std::uint32_t read32(std::uint64_t offset) const;

    // Whether `address` is in the mapping.
    bool holds(void const* address) const
    {
        auto const* const byte = static_cast<std::byte const*>(address);
        return byte >= address_ && byte < address_ + span_;
    }
    std::uint64_t offsetOf(void const* address) const
    {
        return static_cast<std::uint64_t>(static_cast<std::byte const*>(address) - address_);
    }

private:
    std::string path_;
    int descriptor_ = -1;
    std::byte* address_ = nullptr;
    std::uint64_t span_ = 0;
};

}  // namespace QuaskTesting
