#include "interleave/small_table.h"

#include <stdexcept>

#include "support/proving_headers.h"
#include "support/proving_values.h"
#include "support/table_checks.h"
#include "support/table_files.h"

namespace QuaskTesting {
namespace {

TableShape tableShape(SmallTable::Shape const& shape)
{
    TableShape table;
    table.valueType = "Test::Proof";
    table.valueSize = shape.valueSize;
    table.buckets = SmallTable::walkedBuckets + (shape.others == 0 ? 0 : 1);
    table.slots = SmallTable::elements + shape.others + shape.freeSlots;
    table.maxSlots = table.slots + 8;
    return table;
}

}  // namespace

SmallTable::SmallTable(Shape const& shape) : writer_(std::in_place, directory(), tableShape(shape))
{
    for (std::uint32_t i = 0; i < shape.others; ++i) {
        insert(1000 + i, walkedBuckets);
    }
    for (std::uint32_t key = 0; key < elements; ++key) {
        insert(key, key % walkedBuckets);
    }
}

std::string SmallTable::nextValue(std::uint32_t key)
{
    return provingValue(valueSize(), key, generations_[key]++);
}

bool SmallTable::insert(std::uint32_t key, std::uint32_t bucket)
{
    if (elements_.count(key) != 0) {
        return false;
    }
    elements_[key] = {bucket, writer_->insert(bucket, nextValue(key))};
    return true;
}

bool SmallTable::update(std::uint32_t key)
{
    auto const element = elements_.find(key);
    if (element == elements_.end()) {
        return false;
    }
    writer_->update(element->second.slot, nextValue(key));
    return true;
}

bool SmallTable::remove(std::uint32_t key)
{
    auto const element = elements_.find(key);
    if (element == elements_.end()) {
        return false;
    }
    writer_->remove(element->second.bucket, element->second.slot);
    elements_.erase(element);
    return true;
}

bool SmallTable::grow(std::uint32_t slots)
{
    bool const possible = writer_->slots() + slots <= writer_->maxSlots();
    if (possible) {
        writer_->grow(writer_->slots() + slots);
    }
    return possible;
}

bool SmallTable::rewriteSlotHeader()
{
    advanceSlotsHeader(*writer_, ++slotHeaderGeneration_);
    return true;
}

bool SmallTable::rewriteVandralHeader()
{
    advanceVandralHeader(*writer_, ++vandralHeaderGeneration_);
    return true;
}

void SmallTable::openForTakeOver()
{
    writer_.emplace(TableWriter::BeforeTakeOver(), directory());
}

void SmallTable::takeOver()
{
    writer_->takeOver();
    elements_.clear();
    TableImage const table = TableImage::load(directory());
    for (std::uint32_t bucket = 0; bucket < table.bucketLinks.size(); ++bucket) {
        for (std::uint32_t const slot : slotsFrom(table, table.bucketLinks[bucket].value)) {
            elements_[provenBy(shownValue(table, slot)).value().key] = {bucket, slot};
        }
    }
}

std::vector<Operation> const& allOperations()
{
    static std::vector<Operation> const operations{
        {"insert into A", [](SmallTable& table) { return table.insert(6, 0); }},
        {"insert into B", [](SmallTable& table) { return table.insert(5, 1); }},
        {"update the head of A", [](SmallTable& table) { return table.update(4); }},
        {"update the middle of A", [](SmallTable& table) { return table.update(2); }},
        {"update the end of A", [](SmallTable& table) { return table.update(0); }},
        {"update the head of B", [](SmallTable& table) { return table.update(3); }},
        {"remove the head of A", [](SmallTable& table) { return table.remove(4); }},
        {"remove the middle of A", [](SmallTable& table) { return table.remove(2); }},
        {"remove the end of A", [](SmallTable& table) { return table.remove(0); }},
        {"remove the head of B", [](SmallTable& table) { return table.remove(3); }},
        {"move the middle of A to B",
         [](SmallTable& table) { return table.remove(2) && table.insert(2, 1); }},
        {"move the head of B to A",
         [](SmallTable& table) { return table.remove(3) && table.insert(3, 0); }},
        {"take the middle out of A and put it back in front",
         [](SmallTable& table) { return table.remove(2) && table.insert(2, 0); }},
        {"grow", [](SmallTable& table) { return table.grow(1); }},
        {"grow and insert into A",
         [](SmallTable& table) { return table.grow(1) && table.insert(8, 0); }},
        {"rewrite the slot header", [](SmallTable& table) { return table.rewriteSlotHeader(); }},
    };
    return operations;
}

Operation const& operationNamed(std::string const& name)
{
    for (Operation const& operation : allOperations()) {
        if (operation.name == name) {
            return operation;
        }
    }
    throw std::invalid_argument("no such operation: " + name);
}

}  // namespace QuaskTesting
