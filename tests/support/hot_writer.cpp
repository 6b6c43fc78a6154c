#include "support/hot_writer.h"

#include <algorithm>

#include "support/proving_values.h"

namespace QuaskTesting {
namespace {

// Slots added at a time: few, so that readers meet growth often.
constexpr std::uint32_t growthStep = 16;

TableShape shapeOf(HotTable const& table)
{
    TableShape shape;
    shape.valueType = "Test::Proof";
    shape.valueSize = table.valueSize;
    shape.buckets = table.buckets;
    shape.slots = table.slots;
    shape.maxSlots = table.maxSlots == 0 ? table.stable + table.hot + table.slots : table.maxSlots;
    return shape;
}

}  // namespace

HotWriter::HotWriter(std::string const& directory, HotTable const& table)
    : table_(table), writer_(directory, shapeOf(table)), value_(table.valueSize, '\0')
{
    for (std::uint32_t i = 0; i < table.stable; ++i) {
        Element element{stableKey(i), 0, noSlot};
        insert(element);
    }
    for (std::uint32_t i = 0; i < table.hot; ++i) {
        hot_.push_back({hotKey(i), 0, noSlot});
        insert(hot_.back());
    }
}

void HotWriter::step()
{
    Element& element = hot_[random_() % hot_.size()];
    if (element.slot == noSlot) {
        insert(element);
    } else if (random_() % 4 == 0) {
        writer_.remove(bucketOfKey(element.key, table_.buckets), element.slot);
        element.slot = noSlot;
    } else {
        writer_.update(element.slot, nextValue(element));
    }
}

bool HotWriter::addOne()
{
    if (writer_.occupiedSlots() + table_.hot >= writer_.maxSlots()) {
        return false;
    }
    // The hot elements that are out of the table always find room again.
    if (writer_.slots() - writer_.occupiedSlots() <= table_.hot) {
        writer_.grow(std::min(writer_.slots() + growthStep, writer_.maxSlots()));
    }
    Element element{hotKey(table_.hot + added_++), 0, noSlot};
    insert(element);
    return true;
}

void HotWriter::insert(Element& element)
{
    std::string_view const value = nextValue(element);
    element.slot = writer_.insert(bucketOfKey(element.key, table_.buckets), value);
}

std::string_view HotWriter::nextValue(Element& element)
{
    makeProvingValue(value_.data(), value_.size(), element.key, ++element.generation);
    return value_;
}

}  // namespace QuaskTesting
