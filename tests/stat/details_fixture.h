#pragma once

#include <utility>
#include <vector>

#include "stat/stat_fixture.h"

namespace QuaskTesting {

// A table called "feed", whose chains have several lengths.
class DetailsTest : public StatTest
{
protected:
    DetailsTest()
    {
        // Of 8 buckets 4 are empty, 2 have one element, 1 has two, 1 has twenty.
        TableImage image = TableImage::of("int", 4).buckets(8);
        std::uint32_t slot = 0;
        for (auto const& [bucket, length] : {std::pair(0u, 1u), {3u, 20u}, {5u, 1u}, {6u, 2u}}) {
            std::vector<TableImage::Element> elements;
            for (unsigned i = 0; i < length; ++i) {
                elements.emplace_back(slot++, "abcd");
            }
            image.chain(bucket, elements);
        }
        image.bucketsHeader.ownerPid = static_cast<std::uint32_t>(getpid());
        image.slotsHeader.maxSlots = 100;
        image.writeTo(root, "feed");
    }
};

}  // namespace QuaskTesting
