#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "mem/schedule_point.h"

// The only way by which memory that another process changes is read. Every load is one atomic
// access of the word's width, so none is torn or repeated by the compiler; the order is the
// caller's, who says at each load which store of the writer it pairs with.
namespace Mem::Atomics {

// True when the processor loads an aligned 64-bit word atomically. Asked before any table is read.
bool checkCpuSupport();

// The same address. Whoever gives it knows that it is aligned to 8 bytes; loads from there then do
// without the look at its alignment.
template <typename Address>
[[gnu::always_inline]] inline Address* knownAligned(Address* address)
{
    return static_cast<Address*>(__builtin_assume_aligned(address, 8));
}

namespace Detail {

template <typename Word>
[[gnu::always_inline]] inline Word load(void const* address, std::memory_order order)
{
    static_assert(std::atomic_ref<Word>::is_always_lock_free);
    auto* const word = static_cast<Word*>(const_cast<void*>(address));
    return std::atomic_ref<Word>(*word).load(order);
}

inline bool isAligned(void const* address, std::size_t alignment)
{
    return (reinterpret_cast<std::uintptr_t>(address) & (alignment - 1)) == 0;
}

// A word of a table whose layout leaves it unaligned, byte by byte: a writer may tear it.
template <typename Word>
[[gnu::noinline, gnu::cold]] Word loadUnaligned(void const* address)
{
    auto const* const bytes = static_cast<unsigned char const*>(address);
    Word word = 0;
    for (std::size_t i = 0; i < sizeof(Word); ++i) {
        word |= static_cast<Word>(load<unsigned char>(bytes + i, std::memory_order_relaxed))
                << (8 * i);
    }
    std::atomic_thread_fence(std::memory_order_acquire);
    return word;
}

template <typename Word>
[[gnu::always_inline]] inline Word loadWord(void const* address, std::memory_order order)
{
    if (!isAligned(address, sizeof(Word))) [[unlikely]] {
        return loadUnaligned<Word>(address);
    }
    return load<Word>(address, order);
}

}  // namespace Detail

// The 64-bit word at `address`, in one load when it is aligned to 8 bytes; else it may be torn.
[[gnu::always_inline]] inline std::uint64_t load64(void const* address, std::memory_order order)
{
    schedulePoint(address, 8, order);
    return Detail::loadWord<std::uint64_t>(address, order);
}

// The 32-bit word at `address`, in one load when it is aligned to 4 bytes; else it may be torn.
[[gnu::always_inline]] inline std::uint32_t load32(void const* address, std::memory_order order)
{
    schedulePoint(address, 4, order);
    return Detail::loadWord<std::uint32_t>(address, order);
}

// A look ahead that decides nothing but what to prefetch: the value may be of any age.
[[gnu::always_inline]] inline std::uint64_t peek64(void const* address)
{
    return Detail::loadWord<std::uint64_t>(address, std::memory_order_relaxed);
}

// Copies `size` bytes to private memory, in relaxed loads as wide as the alignment of `from`
// allows. The copy means something only when the words that guard it are found unchanged
// afterwards, after fenceAcquire().
[[gnu::always_inline]] inline void copy(void* to, void const* from, std::size_t size)
{
    auto* const out = static_cast<unsigned char*>(to);
    auto const* const in = static_cast<unsigned char const*>(from);
    std::size_t done = 0;
    if (Detail::isAligned(in, 8)) [[likely]] {
        for (; done + 8 <= size; done += 8) {
            schedulePoint(in + done, 8, std::memory_order_relaxed);
            auto const word = Detail::load<std::uint64_t>(in + done, std::memory_order_relaxed);
            std::memcpy(out + done, &word, 8);
        }
    }
    if (done == size) [[likely]] {
        return;
    }
    if (Detail::isAligned(in, 4)) {
        for (; done + 4 <= size; done += 4) {
            schedulePoint(in + done, 4, std::memory_order_relaxed);
            auto const word = Detail::load<std::uint32_t>(in + done, std::memory_order_relaxed);
            std::memcpy(out + done, &word, 4);
        }
    }
    for (; done < size; ++done) {
        schedulePoint(in + done, 1, std::memory_order_relaxed);
        out[done] = Detail::load<unsigned char>(in + done, std::memory_order_relaxed);
    }
}

// What was loaded before this is loaded before everything after it.
inline void fenceAcquire()
{
    scheduleFence();
    std::atomic_thread_fence(std::memory_order_acquire);
}

}  // namespace Mem::Atomics
