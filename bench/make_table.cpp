// make_table DIRECTORY SLOTS VALUE_SIZE ordered|random|single [BUCKETS ELEMENTS]
//
// Makes a static table for the benchmarks: by default as many buckets as slots, four fifths of the
// slots filled, each element in a bucket drawn at random. Ordered: the slots lie in the file in the
// order in which a walk meets them; random: anywhere; single: ordered, and element i in bucket i,
// of which there are enough. Values are pseudo-random words, of the type
// int64_t when they have 8 bytes.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr std::uint32_t none = 0xffffffff;

// A file of this size, mapped for writing while the object lives.
class NewFile
{
public:
    NewFile(std::string const& path, std::size_t size) : size_(size)
    {
        int const descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (descriptor < 0 || ftruncate(descriptor, static_cast<off_t>(size)) != 0) {
            throw std::runtime_error("cannot make " + path);
        }
        void* const mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        close(descriptor);
        if (mapped == MAP_FAILED) {
            throw std::runtime_error("cannot map " + path);
        }
        bytes_ = static_cast<unsigned char*>(mapped);
    }
    NewFile(NewFile const&) = delete;
    NewFile& operator=(NewFile const&) = delete;
    ~NewFile() { munmap(bytes_, size_); }

    template <typename Word>
    void put(std::size_t offset, Word word)
    {
        std::memcpy(bytes_ + offset, &word, sizeof word);
    }

    void putText(std::size_t offset, std::string const& text)
    {
        std::memcpy(bytes_ + offset, text.data(), text.size());
    }

    std::uint32_t hash(std::size_t offset, std::size_t length) const
    {
        std::uint32_t sum = 2166136261u;
        for (std::size_t i = offset; i < offset + length; ++i) {
            sum = (sum ^ bytes_[i]) * 16777619u;
        }
        return sum;
    }

private:
    std::size_t size_;
    unsigned char* bytes_;
};

struct Shape
{
    std::uint32_t slots;
    std::uint32_t valueSize;
    std::string order;
    std::uint32_t buckets;
    std::uint32_t elements;

    std::uint32_t slotSize() const { return std::max(24u, 16 + (valueSize + 7) / 8 * 8); }
};

std::uint64_t linkTo(std::uint32_t index)
{
    return std::uint64_t{index} << 32 | 1;
}

// For each bucket, where its elements are in `elementsInOrder`, a list of slot numbers.
struct Chains
{
    std::vector<std::uint32_t> starts;
    std::vector<std::uint32_t> slots;
};

Chains layOut(Shape const& shape)
{
    std::mt19937 random(12345);
    Chains chains{std::vector<std::uint32_t>(shape.buckets + 1), {}};
    std::uniform_int_distribution<std::uint32_t> bucketOf(0, shape.buckets - 1);
    for (std::uint32_t i = 0; i < shape.elements; ++i) {
        ++chains.starts[(shape.order == "single" ? i : bucketOf(random)) + 1];
    }
    std::partial_sum(chains.starts.begin(), chains.starts.end(), chains.starts.begin());
    chains.slots.resize(shape.slots);
    std::iota(chains.slots.begin(), chains.slots.end(), 0u);
    if (shape.order == "random") {
        std::shuffle(chains.slots.begin(), chains.slots.end(), random);
    }
    chains.slots.resize(shape.elements);
    return chains;
}

void writeBuckets(std::string const& directory, Shape const& shape, Chains const& chains)
{
    NewFile file(directory + "/buckets", 24 + 8 * std::size_t{shape.buckets});
    file.putText(0, "QUASKBKT");
    file.put<std::uint32_t>(8, 1);
    file.put<std::uint32_t>(16, shape.buckets);
    for (std::uint32_t i = 0; i < shape.buckets; ++i) {
        bool const empty = chains.starts[i] == chains.starts[i + 1];
        file.put(24 + 8 * std::size_t{i}, linkTo(empty ? none : chains.slots[chains.starts[i]]));
    }
}

void writeSlotsHeader(NewFile& file, Shape const& shape)
{
    file.putText(0, "QUASKSLT");
    file.put<std::uint32_t>(8, 4);
    file.putText(16, shape.valueSize == 8 ? "int64_t" : "Bench::Blob");
    file.putText(80, "Bench::Table");
    file.put(144, shape.valueSize);
    file.put(148, shape.slotSize());
    file.put(152, shape.slots);
    file.put(156, file.hash(16, 64) + file.hash(80, 64) + file.hash(144, 4) + file.hash(148, 4) +
                      file.hash(152, 4));
    file.put(160, shape.elements);
    file.put(164, none);
    file.put(168, linkTo(shape.slots));
    file.put(176, linkTo(none));
    file.put(184, none);
}

void writeSlots(std::string const& directory, Shape const& shape, Chains const& chains)
{
    std::size_t const slotSize = shape.slotSize();
    NewFile file(directory + "/slots", 176 + slotSize * (std::size_t{shape.slots} + 1));
    writeSlotsHeader(file, shape);
    for (std::uint32_t bucket = 0; bucket < shape.buckets; ++bucket) {
        for (std::uint32_t i = chains.starts[bucket]; i < chains.starts[bucket + 1]; ++i) {
            bool const last = i + 1 == chains.starts[bucket + 1];
            std::size_t const slot = 176 + slotSize * (std::size_t{chains.slots[i]} + 1);
            file.put(slot, linkTo(last ? none : chains.slots[i + 1]));
            file.put<std::uint32_t>(slot + 8, none);
            file.put<std::uint32_t>(slot + 12, 4);
            std::uint64_t word = i * 0x9e3779b97f4a7c15u >> 20;
            for (std::size_t at = 0; at + 8 <= shape.valueSize; at += 8) {
                file.put(slot + 16 + at, word);
                word = word * 6364136223846793005u + 1442695040888963407u;
            }
        }
    }
}

void writeCompanions(std::string const& directory)
{
    for (char const* const name : {"vandral.1", "vandral.2", "orvik"}) {
        NewFile file(directory + "/" + name, 4096);
        file.putText(0, "QUASKVDL");
        file.put<std::uint32_t>(8, 1);
    }
}

std::uint32_t number(char const* text)
{
    return static_cast<std::uint32_t>(std::stoul(text));
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 5 && argc != 7) {
        std::cerr << "usage: make_table DIRECTORY SLOTS VALUE_SIZE ordered|random|single "
                     "[BUCKETS ELEMENTS]\n";
        return 2;
    }
    std::string const directory = argv[1];
    Shape shape{number(argv[2]), number(argv[3]), argv[4], 0, 0};
    shape.buckets = argc == 7 ? number(argv[5]) : shape.slots;
    shape.elements = argc == 7 ? number(argv[6]) : shape.slots / 5 * 4;
    std::filesystem::create_directories(directory);
    Chains const chains = layOut(shape);
    writeBuckets(directory, shape, chains);
    writeSlots(directory, shape, chains);
    writeCompanions(directory);
}
