#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "support/table_writer.h"

namespace QuaskTesting {

// A table that is changed as fast as it goes: what is in it and how it is treated.
struct HotTable
{
    std::uint32_t valueSize = 8;
    std::uint32_t buckets = 64;
    std::uint32_t stable = 100;  // elements that are never touched
    std::uint32_t hot = 100;     // elements that come, change and go
    std::uint32_t slots = 64;    // at first; the table grows on demand
    std::uint32_t maxSlots = 0;  // 0: just enough for all elements
};

// The writer of such a table. Every value proves itself (proving_values.h). Stable elements have
// the keys stableKey(0) to stableKey(stable - 1), hot ones hotKey(0) to hotKey(hot - 1); each
// is in the bucket of its key. Hot elements are put before stable ones, so that changes of
// the chains lead readers astray from them as often as possible.
class HotWriter
{
public:
    // Makes the table in `directory`, all elements in it.
    HotWriter(std::string const& directory, HotTable const& table);

    // One change of a hot element drawn at random: mostly an update, else removed or put back.
    void step();

    // Puts in one more element that is never removed, key hotKey(hot + the number before), as long
    // as there is room: the table grows. False when there is only room for the
    // hot elements left.
    bool addOne();

private:
    struct Element
    {
        std::uint32_t key;
        std::uint32_t generation;
        std::uint32_t slot;  // noSlot: not in the table
    };

    void insert(Element& element);
    std::string_view nextValue(Element& element);

    HotTable table_;
    TableWriter writer_;
    std::vector<Element> hot_;
    std::string value_;
    std::minstd_rand random_{1};
    std::uint32_t added_ = 0;
};

}  // namespace QuaskTesting
