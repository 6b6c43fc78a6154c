#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/private_root.h"
#include "support/store_recorder.h"
#include "support/table_writer.h"

namespace QuaskTesting {

// A table of two buckets to be walked, with the elements that its name gives, in a root directory
// of its own:
//
//     bucket 0: 4 -> 2 -> 0
//     bucket 1: 3 -> 1
//
// It has as many slots as elements, and `freeSlots` more.
class SmallTable
{
public:
    struct Shape
    {
        std::uint32_t valueSize = 16;
        std::uint32_t freeSlots = 1;
        // Elements in a third bucket, which is not walked: they make the slot file longer.
        std::uint32_t others = 0;
    };
    static constexpr std::uint32_t walkedBuckets = 2;
    static constexpr std::uint32_t elements = 5;

    explicit SmallTable(Shape const& shape);

    // What the writer does, if it is possible: an element that is there is not inserted, one that
    // is not there neither changed nor removed. The result says so.
    bool insert(std::uint32_t key, std::uint32_t bucket);
    bool update(std::uint32_t key);
    bool remove(std::uint32_t key);
    bool grow(std::uint32_t slots);
    bool rewriteSlotHeader();
    bool rewriteVandralHeader();

    // The writer has died, and left the files as they are: another opens them, which has stored
    // nothing yet, and then takes over.
    void openForTakeOver();
    void takeOver();

    TableWriter& writer() { return *writer_; }
    std::string directory() const { return root_.path() + "/" + tableName; }
    std::uint32_t valueSize() const { return writer_->valueSize(); }

    static constexpr char const* tableName = "eq";

private:
    struct Element
    {
        std::uint32_t bucket;
        std::uint32_t slot;
    };

    std::string nextValue(std::uint32_t key);

    PrivateRoot root_;
    std::optional<TableWriter> writer_;
    std::map<std::uint32_t, Element> elements_;           // by key
    std::map<std::uint32_t, std::uint32_t> generations_;  // by key; the next one's number
    std::uint32_t slotHeaderGeneration_ = 0;
    std::uint32_t vandralHeaderGeneration_ = 0;
};

// Something that a writer does; false when it cannot.
struct Operation
{
    char const* name;
    bool (*run)(SmallTable&);

    friend std::ostream& operator<<(std::ostream& out, Operation const& operation)
    {
        return out << operation.name;
    }
};

// All that is done to a small table during a walk. Bucket 0 is called A, bucket 1 B.
std::vector<Operation> const& allOperations();

// The one of this name.
Operation const& operationNamed(std::string const& name);

}  // namespace QuaskTesting
