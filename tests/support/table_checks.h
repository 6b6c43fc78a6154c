#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "base/hex.h"
#include "support/table_files.h"

// What the tests of the writer look at, read from the files alone.
namespace QuaskTesting {

inline std::string fileContents(std::string const& directory, TableFile file)
{
    std::ifstream stream(directory + "/" + fileName(file), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// Whether two files are the same; if not, where they part.
inline testing::AssertionResult isSameFile(std::string const& actual, std::string const& expected)
{
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure()
               << actual.size() << " bytes, expected " << expected.size();
    }
    auto const hexAt = [](std::string const& bytes, std::size_t offset) {
        std::string const part = bytes.substr(offset, 32);
        return Dovan::dumpHex(part.data(), static_cast<unsigned>(part.size()));
    };
    for (std::size_t i = 0; i < actual.size(); ++i) {
        if (actual[i] != expected[i]) {
            return testing::AssertionFailure()
                   << "at offset " << i / 8 * 8 << "\n  " << hexAt(actual, i / 8 * 8)
                   << ", expected\n  " << hexAt(expected, i / 8 * 8);
        }
    }
    return testing::AssertionSuccess();
}

// Checks all five files of a table byte by byte.
inline void expectTable(std::string const& directory, TableImage const& expected)
{
    for (TableFile const file : allTableFiles) {
        EXPECT_TRUE(isSameFile(fileContents(directory, file), expected.file(file)))
            << fileName(file);
    }
}

// Whether a slot file passes the checks that readers make, and is as long as it says.
inline testing::AssertionResult hasValidHeader(std::string const& slotsFile)
{
    auto const word = [&](std::size_t offset) {
        std::uint32_t value = 0;
        slotsFile.copy(reinterpret_cast<char*>(&value), sizeof value, offset);
        return value;
    };
    std::uint32_t const count = word(172);
    if (word(160) > count) {
        return testing::AssertionFailure() << word(160) << " of " << count << " slots occupied";
    }
    if (word(164) != noSlot && word(164) >= count) {
        return testing::AssertionFailure() << "slot " << word(164) << " of " << count << " is free";
    }
    std::uint64_t const needed = 176 + std::uint64_t(word(148)) * (1 + std::uint64_t(count));
    if (slotsFile.size() < needed) {
        return testing::AssertionFailure()
               << slotsFile.size() << " bytes for " << count << " slots, not " << needed;
    }
    return testing::AssertionSuccess();
}

// The slots of a list from its first on. A list that leaves the table or comes back to itself fails
// the test and ends there.
inline std::vector<std::uint32_t> slotsFrom(TableImage const& table, std::uint32_t first)
{
    std::vector<std::uint32_t> slots;
    for (std::uint32_t slot = first; slot != noSlot; slot = table.slotImages[slot].next.value) {
        if (slot >= table.slotImages.size() || slots.size() > table.slotImages.size()) {
            ADD_FAILURE() << "a list leads to slot " << slot;
            break;
        }
        slots.push_back(slot);
    }
    return slots;
}

// The value that a reader shows for a slot, cut to the table's value size.
inline std::string shownValue(TableImage const& table, std::uint32_t slot)
{
    SlotImage const& image = table.slotImages[slot];
    SlotImage const& shown = (image.sequence & lookasideBit) != 0 ? table.lookaside : image;
    return shown.value.substr(0, table.slotsHeader.valueSize);
}

// Each bucket's values, in the order of its chain.
inline std::vector<std::vector<std::string>> shownValues(TableImage const& table)
{
    std::vector<std::vector<std::string>> buckets;
    for (PairImage const& link : table.bucketLinks) {
        std::vector<std::string> values;
        for (std::uint32_t const slot : slotsFrom(table, link.value)) {
            values.push_back(shownValue(table, slot));
        }
        buckets.push_back(values);
    }
    return buckets;
}

// Checks that each slot is in just one list, a chain or the free list, and that the header counts
// those in chains.
inline void expectSoundLists(TableImage const& table)
{
    std::vector<std::uint32_t> all;
    for (PairImage const& link : table.bucketLinks) {
        auto const chain = slotsFrom(table, link.value);
        all.insert(all.end(), chain.begin(), chain.end());
    }
    EXPECT_EQ(table.slotsHeader.occupiedSlots, all.size());
    auto const freeSlots = slotsFrom(table, table.slotsHeader.freeHead);
    all.insert(all.end(), freeSlots.begin(), freeSlots.end());
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end()) << "a slot in two lists";
    EXPECT_EQ(all.size(), table.slotImages.size()) << "a slot in no list";
}

}  // namespace QuaskTesting
