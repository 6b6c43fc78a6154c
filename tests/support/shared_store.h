#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

// The stores of a table's writer: the only way by which memory that readers have mapped is written.
//
// Readers take no lock. A reader of a chain
//   - loads a link with acquire, or goes on with the `next` that it loaded last;
//   - loads the slot's `sequence` with acquire, copies the value (its own, or the lookaside slot's
//     when the lookaside bit is set) in relaxed words, passes an acquire fence and loads `sequence`
//     again: the copy counts when that is unchanged;
//   - loads the slot's `next` with acquire, then again the version of the link that led to the
//     slot: the slot counts when that is unchanged.
//
// Everything it may rely on is a pair of a release here and an acquire there:
//   1. Store of a link, release / load of a link, acquire. Who sees the link sees the slot's value,
//      sequence and next, and a mappedSlots that counts the slot.
//   2. Store of `sequence` with the lookaside bit, release / first load of `sequence`, acquire. Who
//      sees the bit sees the slot's value in the lookaside slot.
//   3. Release fence between that store and the first word of the new value / acquire fence after
//      the copy. Who copied a word of the new value sees `sequence` changed.
//   4. Store of `sequence` without the bit, release / first load of `sequence`, acquire. Who sees
//      the store sees the whole new value.
//   5. Release fence between that store and the next overwriting of the lookaside slot / acquire
//      fence after the copy. Who copied a word of another slot's value there sees the `sequence`
//      of the slot that it was after changed.
//   6. Release fence between the store that took a slot out of its chain and the first word of the
//      value with which it is used again / acquire fence after the copy. Who reached the slot
//      by the old link and copied such a word sees that link's version changed.
//   7. Store of `next` of a slot that was taken out, release / load of `next`, acquire. Who goes on
//      by it sees the version of the link that led to the slot changed.
//   8. Store of a header's word, release / acquire load of the version before a header copy, and
//      the acquire fence after it: see TableWriter.
// On x86-64 none of these costs an instruction.
namespace QuaskTesting {

// Notified of every store of the thread before it is made. For tests that stop, record or
// interleave a writer.
class StoreObserver
{
public:
    // `size` bytes at `address` in a mapping are about to become `bytes`.
    virtual void beforeStore(void* address, std::size_t size, void const* bytes,
                             std::memory_order order) = 0;

    virtual void beforeReleaseFence() {}

    // The slot file is about to become `size` bytes long.
    virtual void beforeLengthen(std::uint64_t size) = 0;

protected:
    ~StoreObserver() = default;
};

// The observer of this thread's stores, or null.
inline constinit thread_local StoreObserver* storeObserver = nullptr;

// Has this thread's stores observed as long as it lives. `observer` must outlive it.
class ObserveStores
{
public:
    explicit ObserveStores(StoreObserver& observer) : before_(storeObserver)
    {
        storeObserver = &observer;
    }
    ObserveStores(ObserveStores const&) = delete;
    ObserveStores& operator=(ObserveStores const&) = delete;
    ~ObserveStores() { storeObserver = before_; }

private:
    StoreObserver* before_;
};

namespace SharedStore {

namespace Detail {

template <typename Word>
void store(void* address, Word word, std::memory_order order)
{
    static_assert(std::atomic_ref<Word>::is_always_lock_free);
    if (storeObserver != nullptr) [[unlikely]] {
        storeObserver->beforeStore(address, sizeof word, &word, order);
    }
    std::atomic_ref<Word>(*static_cast<Word*>(address)).store(word, order);
}

template <typename Word>
Word loadOwn(void const* address)
{
    auto* const word = static_cast<Word*>(const_cast<void*>(address));
    return std::atomic_ref<Word>(*word).load(std::memory_order_relaxed);
}

template <typename Word>
Word loadPrivate(void const* address)
{
    Word word;
    std::memcpy(&word, address, sizeof word);
    return word;
}

}  // namespace Detail

// Stores a word that is aligned to its width.
inline void store64(void* address, std::uint64_t word, std::memory_order order)
{
    Detail::store(address, word, order);
}
inline void store32(void* address, std::uint32_t word, std::memory_order order)
{
    Detail::store(address, word, order);
}

// Loads a word of a mapping that nobody but the caller stores to.
inline std::uint64_t loadOwn64(void const* address)
{
    return Detail::loadOwn<std::uint64_t>(address);
}
inline std::uint32_t loadOwn32(void const* address)
{
    return Detail::loadOwn<std::uint32_t>(address);
}

// Stores `size` bytes of private memory at `address`, which is aligned to 8 bytes: front to back in
// relaxed words of 8 bytes, the rest in one of 4 and in single bytes. A reader may see any mixture
// of old and new words until something after it is released.
inline void storeBytes(void* address, void const* data, std::size_t size)
{
    auto* to = static_cast<std::byte*>(address);
    auto const* from = static_cast<std::byte const*>(data);
    constexpr auto relaxed = std::memory_order_relaxed;
    for (; size >= 8; size -= 8, to += 8, from += 8) {
        Detail::store(to, Detail::loadPrivate<std::uint64_t>(from), relaxed);
    }
    if (size >= 4) {
        Detail::store(to, Detail::loadPrivate<std::uint32_t>(from), relaxed);
        size -= 4, to += 4, from += 4;
    }
    for (; size > 0; --size, ++to, ++from) {
        Detail::store(to, Detail::loadPrivate<unsigned char>(from), relaxed);
    }
}

// The same for bytes of a mapping that nobody but the caller stores to; both addresses are aligned
// to 8 bytes.
inline void copyBytes(void* address, void const* own, std::size_t size)
{
    auto* to = static_cast<std::byte*>(address);
    auto const* from = static_cast<std::byte const*>(own);
    constexpr auto relaxed = std::memory_order_relaxed;
    for (; size >= 8; size -= 8, to += 8, from += 8) {
        Detail::store(to, Detail::loadOwn<std::uint64_t>(from), relaxed);
    }
    if (size >= 4) {
        Detail::store(to, Detail::loadOwn<std::uint32_t>(from), relaxed);
        size -= 4, to += 4, from += 4;
    }
    for (; size > 0; --size, ++to, ++from) {
        Detail::store(to, Detail::loadOwn<unsigned char>(from), relaxed);
    }
}

// Rewrites a link or another pair of words {version, value} in one store: the version goes up by
// one.
inline void relink(void* pair, std::uint32_t value)
{
    auto const version = static_cast<std::uint32_t>(loadOwn64(pair)) + 1;
    store64(pair, std::uint64_t(value) << 32 | version, std::memory_order_release);
}

// What was stored before this is seen by everyone who sees something that is stored after it and
// then passes an acquire fence.
inline void releaseFence()
{
    if (storeObserver != nullptr) [[unlikely]] {
        storeObserver->beforeReleaseFence();
    }
    std::atomic_thread_fence(std::memory_order_release);
}

}  // namespace SharedStore

}  // namespace QuaskTesting
