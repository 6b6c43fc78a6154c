// hostile_table SHAPE DIRECTORY NUMBER [NUMBER]
//
// Makes a table whose headers pass every check, of one of these shapes:
//
//     making N            the table number N of making.h
//     rows BUCKETS BYTES  one element with a value of so many bytes in each bucket
//     large BYTES         one element whose value has so many bytes
//     flags BYTES         the same, of the type bool[BYTES], whose text is the longest for its size
//     sparse BYTES N      a chain of N such elements, but of the slot file only the header and the
//                         links are there: all values are holes
//     chain N             N buckets that all lead to one chain of N slots
//     zeros BUCKETS BYTES a bucket file that is one hole: each bucket leads to the one slot, whose
//                         value has so many bytes

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "attack/making.h"
#include "support/table_files.h"
#include "support/table_layout.h"

namespace {

using namespace QuaskTesting;

TableImage rows(std::uint32_t buckets, std::uint32_t valueSize,
                std::string const& type = "Attack::Blob")
{
    TableImage image = TableImage::of(type, valueSize);
    image.buckets(buckets).slots(buckets);
    for (std::uint32_t i = 0; i < buckets; ++i) {
        image.chain(i, {{i, bytesOf(i)}});
    }
    image.slotsHeader.maxSlots = 2 * buckets;
    return image;
}

TableImage oneChain(std::uint32_t count)
{
    TableImage image = TableImage::of("Attack::Word", 8);
    std::vector<TableImage::Element> elements;
    for (std::uint32_t i = 0; i < count; ++i) {
        elements.emplace_back(i, "element.");
    }
    image.buckets(count).chain(0, elements);
    for (PairImage& link : image.bucketLinks) {
        link = image.bucketLinks.front();
    }
    return image;
}

void makeSparse(std::string const& directory, std::uint32_t valueSize, std::uint32_t count)
{
    TableImage image = TableImage::of("Attack::Blob", valueSize).buckets(1);
    image.bucketLinks[0].value = 0;
    image.slotsHeader.occupiedSlots = count;
    image.slotsHeader.mappedCount = count;
    image.slotsHeader.hash = image.checksum();
    // Built with small slots, so that the hole is never in memory, and their size put right after.
    std::uint32_t const slotSize = image.slotsHeader.slotSize;
    image.slotsHeader.slotSize = slotSizeFor(0);
    image.patch(TableFile::slots, SlotsOffset::slotSize, bytesOf(slotSize)).writeTo(directory);
    std::filesystem::resize_file(directory + "/slots", slotsFileSize(slotSize, count));
    std::fstream file(directory + "/slots", std::ios::binary | std::ios::in | std::ios::out);
    for (std::uint32_t slot = 0; slot < count; ++slot) {
        PairImage const next{0, slot + 1 < count ? slot + 1 : noSlot};
        file.seekp(static_cast<std::streamoff>(SlotsOffset::slot(slotSize, slot)));
        file.write(bytesOf(next).data(), sizeof next);
    }
}

void makeZeros(std::string const& directory, std::uint32_t buckets, std::uint32_t valueSize)
{
    TableImage image = rows(1, valueSize);
    image.bucketLinks.clear();
    image.bucketsHeader.numBuckets = buckets;
    image.writeTo(directory);
    std::filesystem::resize_file(directory + "/buckets", BucketsOffset::link(buckets));
}

bool make(std::string_view shape, std::string const& directory, std::uint32_t first,
          std::uint32_t second)
{
    if (shape == "making") {
        QuaskAttack::making(first).writeTo(directory);
    } else if (shape == "rows") {
        rows(first, second).writeTo(directory);
    } else if (shape == "large") {
        rows(1, first).writeTo(directory);
    } else if (shape == "flags") {
        rows(1, first, "bool[" + std::to_string(first) + "]").writeTo(directory);
    } else if (shape == "sparse") {
        makeSparse(directory, first, second);
    } else if (shape == "chain") {
        oneChain(first).writeTo(directory);
    } else if (shape == "zeros") {
        makeZeros(directory, first, second);
    } else {
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    auto const number = [&](int index) {
        return index < argc ? static_cast<std::uint32_t>(std::stoul(argv[index])) : 0;
    };
    if (argc < 4 || !make(argv[1], argv[2], number(3), number(4))) {
        std::cerr << "usage: hostile_table SHAPE DIRECTORY NUMBER [NUMBER]\n";
        return 2;
    }
}
