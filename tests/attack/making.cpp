#include "attack/making.h"

#include <array>

namespace QuaskAttack {

using QuaskTesting::bytesOf;
using QuaskTesting::TableImage;

TableImage making(std::uint32_t number)
{
    std::uint32_t const buckets = firstBuckets + number % 64;
    TableImage image = TableImage::of("Attack::Pair", 8);
    image.buckets(buckets).slots(buckets);
    for (std::uint32_t bucket = 0; bucket < buckets; ++bucket) {
        std::array const value{number, bucket};
        image.chain(bucket, {{(bucket + number) % buckets, bytesOf(value)}});
    }
    std::uint32_t const figure = 1000000 + number;
    image.slotsHeader.maxSlots = figure;
    image.vandral1.notifications = {number, figure};
    image.vandral2.notifications = {number, figure};
    image.bucketsHeader.orvik = number;
    image.slotsHeader.orvik = number;
    image.vandral1.orvik = number;
    image.vandral2.orvik = number;
    return image;
}

}  // namespace QuaskAttack
