#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "support/table_layout.h"
#include "support/writable_file.h"

namespace QuaskTesting {

// What a table is made with. Sizes in bytes.
struct TableShape
{
    std::string valueType = "std::uint64_t";
    std::uint32_t valueSize = 8;
    std::uint32_t buckets = 16;
    std::uint32_t slots = 16;  // at first
    std::uint32_t maxSlots = 1 << 20;
    std::uint16_t instanceId = 1;
    std::string classType = "Quask::Table";
};

// The writer of one table, which it makes or takes over. Readers may have the files mapped all the
// time. One writer per table and one thread per writer; what its stores promise to readers is in
// shared_store.h.
//
// All it knows of the table's state is in the files: when their contents are put back to an earlier
// state, it goes on from there.
//
// A writer may die before any of its stores: the headers then pass their checks, no chain is
// broken, and taking over mends the rest.
class TableWriter
{
public:
    // A new table in `directory`, which is made with its parents where they are missing. A table
    // that is there is replaced; who has it mapped keeps the old one. Throws when files cannot be
    // made.
    TableWriter(std::string const& directory, TableShape const& shape);

    // Takes over the table in `directory` from a writer that died: finishes its last update, puts
    // slots that it had in hand back to the free list, counts the occupied slots again and makes
    // this process the owner. Stores nothing that is right already. Throws std::system_error when a
    // file is missing, std::runtime_error when the contents cannot be a dead writer's.
    explicit TableWriter(std::string const& directory);

    // The same, but nothing is stored before takeOver(), which is to be called before all else.
    struct BeforeTakeOver
    {};
    TableWriter(BeforeTakeOver, std::string const& directory);
    void takeOver();

    // Adds an element of these valueSize() bytes at the head of the bucket's chain; its slot. Grows
    // the table when no slot is free. Throws std::length_error when it has maxSlots() already.
    std::uint32_t insert(std::uint32_t bucket, std::string_view value);

    // Gives the element in `slot` another value.
    void update(std::uint32_t slot, std::string_view value);

    // Removes the element in `slot` from the bucket's chain. Throws std::invalid_argument when it
    // is not there.
    void remove(std::uint32_t bucket, std::uint32_t slot);

    // Grows the table to `slots` slots. Nothing happens when it has as many. Throws
    // std::length_error when that is more than maxSlots().
    void grow(std::uint32_t slots);

    // Changes of headers.
    //
    // A reader copies a header by loading a version (notifications.version of a vandral header,
    // mappedSlots.version of the slot header), copying, and loading the version again; it takes the
    // copy when the two are the same. That shows that the version did not change, not that the
    // writer was at rest. So it is not enough to change the version before and after a change of
    // several words: a copy that falls between the two has seen the same version twice and half a
    // change. What keeps a copy from mixing two states is this:
    //   1. A change is a row of steps, each the store of one word, and what the header promises
    //      holds after each step.
    //   2. The version changes after each step, before the next one.
    // Step and version are release stores. Then a copy that is taken holds everything stored before
    // the version that it loaded first (acquire), and nothing stored after the version after that
    // one (else the acquire fence would have made the second load see it). Between those two lies
    // the store of a single word, old or new: the copy shows the header as it was at one moment.
    //
    // occupiedSlots and freeHead change with every element and without a version. A copy promises
    // of them only that they are not beyond the count of the same copy; they are stored after the
    // mappedSlots that admits them, so a copy that has the later one has seen the version change.

    // One step of the header of "vandral.1", then notifications {version + 1, value + 1}.
    void setMinSequence(std::uint64_t sequence);
    void setNumReaders(std::uint32_t count);
    void setCurrentTable(std::uint32_t table);

    // The notification alone.
    void notify();

    // One step of the slot header, then mappedSlots {version + 1, the same count}. Both words mean
    // nothing to readers, and stand at either end of what they copy.
    void setSlotsOrvik(std::uint32_t orvik);
    void setLookasideWord(std::uint32_t word);

    std::uint32_t numBuckets() const { return numBuckets_; }
    std::uint32_t valueSize() const { return valueSize_; }
    std::uint32_t slotSize() const { return slotSize_; }
    std::uint32_t maxSlots() const { return maxSlots_; }
    std::uint32_t slots() const;          // present in the file
    std::uint32_t occupiedSlots() const;  // in a chain

    // The file that `address`, as a store observer gets it, is in, and where in it.
    struct Place
    {
        TableFile file;
        std::uint64_t offset;
    };
    Place placeOf(void const* address) const;

private:
    void openFiles();
    void finishUpdate();
    void mendLists();

    std::byte* slotsWord(std::uint64_t offset) const { return slotsStart_ + offset; }
    std::byte* bucketLink(std::uint32_t bucket) const;
    std::byte* record(std::uint32_t slot) const;
    std::byte* valueOf(std::uint32_t slot) const;
    void checkSlot(std::uint32_t slot) const;
    void checkValue(std::string_view value) const;

    std::uint32_t freeHead() const;
    void setFreeHead(std::uint32_t slot);
    void setOccupiedSlots(std::uint32_t count);
    void putIntoFreeList(std::uint32_t slot);
    void changeVersionOfSlots();

    WritableFile buckets_;
    WritableFile slots_;
    WritableFile vandral1_;
    std::byte* bucketsStart_ = nullptr;
    std::byte* slotsStart_ = nullptr;
    std::byte* vandralStart_ = nullptr;
    std::uint32_t numBuckets_ = 0;
    std::uint32_t valueSize_ = 0;
    std::uint32_t slotSize_ = 0;
    std::uint32_t maxSlots_ = 0;
};

}  // namespace QuaskTesting
