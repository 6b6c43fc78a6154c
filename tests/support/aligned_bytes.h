#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace QuaskTesting {

// Bytes at an address that is a multiple of 8, as those of a mapped file are.
class AlignedBytes
{
public:
    explicit AlignedBytes(std::string_view bytes) : words_((bytes.size() + 7) / 8)
    {
        std::memcpy(words_.data(), bytes.data(), bytes.size());
    }

    // The bytes from the first on, taken for a mapped T. There must be enough of them.
    template <typename T>
    T const& as() const
    {
        return *reinterpret_cast<T const*>(words_.data());
    }

private:
    std::vector<std::uint64_t> words_;
};

}  // namespace QuaskTesting
