#include "mem/atomics.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace {

using namespace Mem::Atomics;

// Bytes 01, 02, ... from an address that is a multiple of 16.
struct alignas(16) Counted
{
    Counted()
    {
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            bytes[i] = static_cast<unsigned char>(i + 1);
        }
    }

    std::array<unsigned char, 64> bytes;
};

TEST(Load64, GivesTheWordInLittleEndianOrder)
{
    Counted const memory;
    EXPECT_EQ(load64(&memory.bytes[0], std::memory_order_acquire), 0x0807060504030201u);
    EXPECT_EQ(load64(&memory.bytes[8], std::memory_order_relaxed), 0x100f0e0d0c0b0a09u);
}

TEST(Load64, ReadsAWordAtAnyAddress)
{
    Counted const memory;
    for (unsigned offset = 0; offset < 16; ++offset) {
        std::uint64_t expected = 0;
        std::memcpy(&expected, &memory.bytes[offset], sizeof expected);
        EXPECT_EQ(load64(&memory.bytes[offset], std::memory_order_acquire), expected) << offset;
        EXPECT_EQ(peek64(&memory.bytes[offset]), expected) << offset;
    }
}

TEST(Load32, ReadsAWordAtAnyAddress)
{
    Counted const memory;
    EXPECT_EQ(load32(&memory.bytes[4], std::memory_order_relaxed), 0x08070605u);
    for (unsigned offset = 0; offset < 16; ++offset) {
        std::uint32_t expected = 0;
        std::memcpy(&expected, &memory.bytes[offset], sizeof expected);
        EXPECT_EQ(load32(&memory.bytes[offset], std::memory_order_acquire), expected) << offset;
    }
}

TEST(Copy, CopiesAnyNumberOfBytesFromAnyAddressAndNoByteMore)
{
    Counted const memory;
    for (unsigned offset = 0; offset < 9; ++offset) {
        for (unsigned size = 0; size <= 40; ++size) {
            std::array<unsigned char, 48> to{};
            to.fill(0xee);
            std::array<unsigned char, 48> expected = to;
            std::memcpy(expected.data(), &memory.bytes[offset], size);
            Mem::Atomics::copy(to.data(), &memory.bytes[offset], size);
            EXPECT_EQ(to, expected) << "offset " << offset << " size " << size;
        }
    }
}

TEST(Copy, WritesToAnyAddress)
{
    Counted const memory;
    std::array<unsigned char, 24> to{};
    Mem::Atomics::copy(to.data() + 1, memory.bytes.data(), 23);
    EXPECT_EQ(to[0], 0);
    EXPECT_EQ(std::memcmp(to.data() + 1, memory.bytes.data(), 23), 0);
}

// A segment is mapped read-only: the loads must not be made by instructions that also write.
TEST(Load64, ReadsConstantMemory)
{
    alignas(8) static constexpr std::array<std::uint64_t, 2> constant{0x1122334455667788, 0};
    EXPECT_EQ(load64(constant.data(), std::memory_order_acquire), 0x1122334455667788u);
}

}  // namespace
