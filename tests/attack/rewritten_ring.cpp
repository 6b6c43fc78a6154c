// rewritten_ring DIRECTORY SLOTS few|all
//
// Makes a table of two buckets, the first with one element, the second with a chain that is a ring
// of SLOTS slots. Prints "ready", and rewrites links of the ring without changing where they lead,
// in one round per millisecond until its standard input ends: all of them, or a few, at the
// distances from the head that are powers of two. The ring stays.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <numeric>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "attack/input_ended.h"
#include "support/shared_store.h"
#include "support/table_files.h"
#include "support/table_layout.h"
#include "support/writable_file.h"

namespace {

using namespace QuaskTesting;

constexpr unsigned rewrittenLinks = 40;  // of few

void makeRing(std::string const& directory, std::uint32_t slots)
{
    TableImage image = TableImage::of("Attack::Word", 8);
    image.buckets(2).slots(slots + 1);
    for (std::uint32_t i = 0; i < slots; ++i) {
        image.slotImages[i].next.value = (i + 1) % slots;
    }
    image.bucketLinks[0].value = slots;
    image.bucketLinks[1].value = 0;
    image.slotsHeader.occupiedSlots = slots + 1;
    image.slotsHeader.maxSlots = slots + 1;
    image.writeTo(directory);
}

std::vector<std::uint32_t> rewrittenSlots(std::string_view which, std::uint32_t slots)
{
    std::vector<std::uint32_t> rewritten;
    if (which == "all") {
        rewritten.resize(slots);
        std::iota(rewritten.begin(), rewritten.end(), 0u);
        return rewritten;
    }
    for (unsigned power = 0; power < rewrittenLinks; ++power) {
        rewritten.push_back(static_cast<std::uint32_t>(((std::uint64_t{1} << power) - 1) % slots));
    }
    return rewritten;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::cerr << "usage: rewritten_ring DIRECTORY SLOTS few|all\n";
        return 2;
    }
    std::string const directory = argv[1];
    auto const slots = static_cast<std::uint32_t>(std::stoul(argv[2]));
    makeRing(directory, slots);
    WritableFile file(directory + "/slots");
    std::byte* const start = file.map(file.size());
    std::vector<std::uint32_t> const rewritten = rewrittenSlots(argv[3], slots);
    std::cout << "ready" << std::endl;
    for (std::uint32_t version = 1; !QuaskAttack::inputEnded(); ++version) {
        for (std::uint32_t const slot : rewritten) {
            std::byte* const link = start + SlotsOffset::slot(slotSizeFor(8), slot);
            SharedStore::store64(link, packPair(version, (slot + 1) % slots),
                                 std::memory_order_release);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}
