#include "support/random_table.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace QuaskTesting {

TableImage RandomTable::image() const
{
    std::mt19937 random(seed);
    auto const draw = [&random] { return static_cast<std::uint32_t>(random()); };
    TableImage image = TableImage::of(valueType, valueSize).buckets(buckets).slots(elements);
    std::vector<std::uint32_t> slots(elements);
    std::iota(slots.begin(), slots.end(), 0u);
    std::shuffle(slots.begin(), slots.end(), random);
    for (PairImage& link : image.bucketLinks) {
        link.version = draw();
    }
    for (std::uint32_t const slot : slots) {
        SlotImage& record = image.slotImages[slot];
        PairImage& head = image.bucketLinks[draw() % buckets];
        record.next = {draw(), head.value};
        record.sequence = draw() & ~lookasideBit;
        record.value.resize(valueSize);
        std::generate(record.value.begin(), record.value.end(),
                      [&] { return static_cast<char>(draw()); });
        head.value = slot;
    }
    image.slotsHeader.occupiedSlots = elements;
    return image;
}

}  // namespace QuaskTesting
