#include "base_tables.h"

#include <array>
#include <cstdint>
#include <string>

namespace QuaskFuzzing {
namespace {

using QuaskTesting::bytesOf;
using QuaskTesting::TableFile;
using QuaskTesting::TableImage;

TableImage emptyFiles()
{
    TableImage image;
    for (TableFile const file : QuaskTesting::allTableFiles) {
        image.resize(file, 0);
    }
    return image;
}

TableImage oneWriteUnderWay()
{
    TableImage image = TableImage::of("char[12]", 12)
                           .buckets(4)
                           .chain(1, {{0, "whole"}, {2, "\x01\"\\"}, {1, "twelve bytes"}});
    return image.rewriting(2, "old", "half").freeList({3});
}

// Slots 2 to 5 are in the file, and not yet counted.
TableImage aboutToGrow()
{
    TableImage image = TableImage::of("unsigned long", 8)
                           .buckets(4)
                           .chain(0, {{0, bytesOf(1ul)}, {1, bytesOf(2ul)}})
                           .slots(6);
    image.slotsHeader.mappedCount = 2;
    return image;
}

// Both files that are walked are longer than a page.
TableImage severalPages()
{
    constexpr std::uint32_t slotCount = 150;
    TableImage image = TableImage::of("std::uint16_t[12]", 24).buckets(600);
    for (std::uint32_t slot = 0; slot < slotCount; slot += 3) {
        std::string const value(24, static_cast<char>(slot));
        image.chain(12 * slot / 3, {{slot + 2, value}, {slot, value}, {slot + 1, value}});
    }
    return image;
}

TableImage oneLongChain()
{
    std::string const value(40, 'v');
    std::vector<TableImage::Element> elements;
    for (std::uint32_t slot = 0; slot < 24; ++slot) {
        elements.emplace_back(slot, value);
    }
    return TableImage::of("Quotes::Level", 40).buckets(2).chain(1, elements);
}

std::array<TableImage, baseTableCount> makeTables()
{
    return {emptyFiles(),
            TableImage::of("std::int32_t", 4)
                .buckets(8)
                .chain(0, {{3, bytesOf(-2)}})
                .chain(6, {{5, bytesOf(42)}, {4, bytesOf(0)}, {1, bytesOf(7)}})
                .freeList({2, 0}),
            oneWriteUnderWay(),
            TableImage::of("double[2]", 16).buckets(2).chain(0, {{0, bytesOf(1.5)}, {1, ""}}),
            TableImage::of("Quask::EmptyValue", 0).buckets(3).chain(2, {{0, ""}, {1, ""}}),
            oneLongChain(),
            aboutToGrow(),
            severalPages()};
}

}  // namespace

TableImage const& baseTable(std::size_t number)
{
    static std::array const tables = makeTables();
    return tables.at(number);
}

}  // namespace QuaskFuzzing
