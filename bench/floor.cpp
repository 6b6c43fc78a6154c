// floor DIRECTORY [touch] [empty]
//
// The least that a scan of a static or live table in the plain style can cost: the same walk with
// all its checks, written by hand for nothing but speed, without a word on errors. It shares no
// code with the tool and is what the tool's time is divided by. With "touch" it reads everything
// and prints nothing; with "empty" it prints empty buckets, too.

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "floor_output.h"

namespace {

constexpr std::uint32_t none = 0xffffffff;
constexpr std::uint32_t batchSize = 16;
constexpr std::uint32_t levels = 4;  // of chains that are asked for ahead

struct File
{
    unsigned char* bytes;
    std::size_t size;
};

File map(std::string const& path)
{
    int const descriptor = open(path.c_str(), O_RDONLY);
    struct stat status
    {};
    if (descriptor < 0 || fstat(descriptor, &status) != 0) {
        std::perror(path.c_str());
        std::exit(1);
    }
    auto const size = static_cast<std::size_t>(status.st_size);
    void* const mapped = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    return {static_cast<unsigned char*>(mapped), size};
}

template <typename Word>
Word load(unsigned char* address, std::memory_order order)
{
    return std::atomic_ref<Word>(*reinterpret_cast<Word*>(address)).load(order);
}

std::uint64_t link(unsigned char* address)
{
    return load<std::uint64_t>(address, std::memory_order_acquire);
}

std::uint32_t indexOf(std::uint64_t word)
{
    return static_cast<std::uint32_t>(word >> 32);
}

unsigned long long checksum = 0;

// Slots of one batch of buckets that were asked for.
struct Wanted
{
    unsigned char* slots[batchSize + 1];
    std::uint32_t count;
};

struct Walk
{
    File buckets;
    File slots;
    std::uint32_t bucketCount;
    std::uint32_t valueSize;
    std::uint32_t slotSize;
    std::uint32_t slotCount;
    std::uint32_t mappedVersion;
    bool printing;
    bool printEmpty;
    Wanted ahead[levels] = {};
    std::uint32_t restarts = 0;
    std::uint32_t hits = 0;

    unsigned char* slot(std::uint32_t index) const
    {
        return slots.bytes + 176 + std::size_t{slotSize} * (std::size_t{index} + 1);
    }

    // Asks for the slots that `count` links lead to, and lists those there are. The links lie
    // one after another, or at the addresses of the slots of another list.
    template <typename LinkAt>
    void request(Wanted& wanted, std::uint32_t count, LinkAt linkAt) const
    {
        unsigned char* const base = slot(0);
        std::size_t const size = slotSize;
        std::uint32_t const there = slotCount;
        std::uint32_t found = 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            std::uint32_t const index =
                indexOf(load<std::uint64_t>(linkAt(i), std::memory_order_relaxed));
            unsigned char* const address = base + size * std::min(index, there);
            __builtin_prefetch(address);
            __builtin_prefetch(address + size - 1);
            wanted.slots[found] = address;
            found += index < there ? 1 : 0;
        }
        wanted.count = found;
    }

    // The walk begins the batch at `first`: the heads of a batch some way ahead are asked for, and
    // the slots after those that were asked for a batch ago and have arrived.
    void prefetch(std::uint32_t first)
    {
        for (std::uint32_t level = levels - 1; level > 0; --level) {
            Wanted const& arrived = ahead[level - 1];
            request(ahead[level], arrived.count,
                    [&arrived](std::uint32_t i) { return arrived.slots[i]; });
        }
        std::uint64_t const begin = std::uint64_t{first} + batchSize * levels;
        std::uint64_t const end = std::min<std::uint64_t>(bucketCount, begin + batchSize);
        unsigned char* const links = buckets.bytes + 24 + 8 * begin;
        request(ahead[0], begin < end ? static_cast<std::uint32_t>(end - begin) : 0,
                [links](std::uint32_t i) { return links + 8 * std::size_t{i}; });
    }

    void copyValue(unsigned char* from, unsigned char* value) const
    {
        for (std::uint32_t i = 0; i < valueSize; i += 8) {
            auto const word = load<std::uint64_t>(from + i, std::memory_order_relaxed);
            std::memcpy(value + i, &word, 8);
        }
        std::atomic_thread_fence(std::memory_order_acquire);
    }

    // One chain into the output; false when it changed during that.
    bool chain(std::uint32_t bucket)
    {
        alignas(16) static unsigned char value[65536];
        unsigned char* linkAddress = buckets.bytes + 24 + 8 * std::size_t{bucket};
        std::uint64_t word = link(linkAddress);
        if (indexOf(word) == none && !printEmpty) {
            return true;
        }
        if (printing) {
            putText("bucket[", 7);
            putHex(bucket);
            *out++ = ']';
        }
        while (indexOf(word) != none) {
            if (indexOf(word) >= slotCount) {
                std::exit(1);
            }
            unsigned char* const at = slot(indexOf(word));
            auto sequence = load<std::uint32_t>(at + 12, std::memory_order_acquire);
            bool lookaside = false;
            for (;;) {
                lookaside = (sequence & 2) != 0;
                hits += lookaside ? 1 : 0;
                copyValue(lookaside ? slots.bytes + 192 : at + 16, value);
                auto const again = load<std::uint32_t>(at + 12, std::memory_order_acquire);
                if (again == sequence) {
                    break;
                }
                sequence = again;
            }
            std::uint64_t const next = link(at);
            if (load<std::uint32_t>(slots.bytes + 168, std::memory_order_relaxed) !=
                mappedVersion) {
                std::exit(1);
            }
            if (load<std::uint32_t>(linkAddress, std::memory_order_relaxed) !=
                static_cast<std::uint32_t>(word)) {
                return false;
            }
            if (printing) {
                *out++ = ' ';
                putHex(indexOf(word));
                putText("-->*", 4);
                out -= lookaside ? 0 : 1;
                putBytes(value, valueSize);
            } else {
                checksum += value[0];
            }
            word = next;
            linkAddress = at;
        }
        if (printing) {
            putText(" ffffffff --> none\n", 19);
        }
        return true;
    }

    void run()
    {
        for (std::uint32_t first = 0; first < bucketCount; first += batchSize) {
            std::uint32_t const last = std::min(bucketCount, first + batchSize);
            prefetch(first);
            for (std::uint32_t bucket = first; bucket < last; ++bucket) {
                char* const lineStart = out;
                while (!chain(bucket)) {
                    out = lineStart;
                    ++restarts;
                }
                if (out >= output + outputSize) {
                    flush();
                }
            }
        }
        out += std::snprintf(out, 100, "Lookaside hits: %u\nChain restarts: %u\n", hits, restarts);
        flush();
    }
};

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        return 2;
    }
    bool touch = false;
    bool empty = false;
    for (int i = 2; i < argc; ++i) {
        touch = touch || std::strcmp(argv[i], "touch") == 0;
        empty = empty || std::strcmp(argv[i], "empty") == 0;
    }
    makeHexPairs();
    std::string const directory = argv[1];
    Walk walk{map(directory + "/buckets"), map(directory + "/slots"), 0, 0, 0, 0, 0, !touch, empty};
    std::memcpy(&walk.bucketCount, walk.buckets.bytes + 16, 4);
    std::memcpy(&walk.valueSize, walk.slots.bytes + 144, 4);
    std::memcpy(&walk.slotSize, walk.slots.bytes + 148, 4);
    std::memcpy(&walk.mappedVersion, walk.slots.bytes + 168, 4);
    std::memcpy(&walk.slotCount, walk.slots.bytes + 172, 4);
    walk.run();
    return checksum == 1 ? 3 : 0;
}
