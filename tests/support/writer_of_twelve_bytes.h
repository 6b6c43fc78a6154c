#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include <unistd.h>

#include "support/private_root.h"
#include "support/table_files.h"
#include "support/table_writer.h"

namespace QuaskTesting {

// Values of 12 bytes take a word of 8 and one of 4. A slot has 32 bytes: the lookaside slot at 176,
// slot i at 208 + 32 i.
class WriterOfTwelveBytes : public testing::Test
{
protected:
    static TableShape shape()
    {
        TableShape shape;
        shape.valueType = "char[12]";
        shape.valueSize = 12;
        shape.buckets = 4;
        shape.slots = 3;
        shape.maxSlots = 7;
        return shape;
    }

    // The table as it is made.
    static TableImage newTable()
    {
        auto const pid = static_cast<std::uint32_t>(getpid());
        TableImage image = TableImage::of("char[12]", 12).buckets(4).freeList({0, 1, 2});
        image.bucketsHeader.ownerPid = pid;
        image.bucketsHeader.orvik = 1 << 16 | (pid & 0xffff);
        image.slotsHeader.orvik = image.bucketsHeader.orvik;
        image.vandral1.orvik = image.bucketsHeader.orvik;
        image.vandral2.orvik = image.bucketsHeader.orvik;
        image.slotsHeader.maxSlots = 7;
        image.slotsHeader.mappedVersion = 1;
        for (SlotImage& slot : image.slotImages) {
            slot.next.version = 1;
        }
        return image;
    }

    PrivateRoot root;
    std::string directory = root.path() + "/eq";
    TableWriter writer{directory, shape()};
    TableImage expected = newTable();
};

inline std::string word(std::uint32_t value)
{
    return std::string(bytesOf(value));
}

inline std::string pair(std::uint32_t version, std::uint32_t value)
{
    return word(version) + word(value);
}

}  // namespace QuaskTesting
