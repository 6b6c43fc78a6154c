#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "interleave/choices.h"
#include "interleave/moments.h"
#include "interleave/writer_history.h"
#include "support/store_recorder.h"

// The memory of a table between a writer, whose stores were recorded, and a reader, whose every
// load passes here first. It decides what the reader sees, in another way in each execution, until
// there is no other way left:
//
//     do {
//         memory.begin();
//         {
//             SchedulesLoads scheduling(memory, placeOf);
//             ... the reader's code ...
//         }
//     } while (memory.advance());
//
// A reader is deterministic: what it loads, where, and what it comes to depends on nothing but the
// values that it has loaded before. So one execution stands for all schedules that make it load the
// same values in the same order, and is run once.
namespace QuaskTesting {

__extension__ typedef unsigned __int128 BigCount;
std::string decimal(BigCount count);

// Thrown out of a load when a reader loads on and on without seeing anything new.
struct EndlessReading
{};

class ScheduledMemory
{
public:
    using PlaceOf = std::function<std::pair<TableFile, std::uint64_t>(void const*)>;

    // `endless` loads in a row that see nothing new are too many.
    ScheduledMemory(StoreReplay& replay, WriterHistory const& history, unsigned endless)
        : history_(history), replay_(replay), endless_(endless)
    {}
    ScheduledMemory(ScheduledMemory const&) = delete;
    ScheduledMemory& operator=(ScheduledMemory const&) = delete;

    // Puts the files back to moment 0: a new execution begins.
    void begin();

    // The execution has ended. False when it was the last.
    bool advance() { return choices_.advance(); }

    WriterHistory const& history() const { return history_; }

    // Number of loads of this execution so far.
    std::size_t loads() const { return loads_.size(); }

    // The number of the last load before number `end` that loaded just this place. There must be
    // one.
    std::size_t lastLoadOf(Place const& place, std::size_t end) const;

    // How many schedules the execution that has ended stands for; 0 where they are not counted.
    virtual BigCount schedules() const = 0;

    // Calls `check(first, last)` for spans of moments, each of which some schedule of this
    // execution that has ended has between the loads number `firstLoad` and `lastLoad`, and every
    // schedule at least one of them: what holds for these spans holds in all its schedules.
    using SpanCheck = std::function<void(Moment first, Moment last)>;
    virtual void forTightestSpans(std::size_t firstLoad, std::size_t lastLoad,
                                  SpanCheck const& check) const = 0;

    // What was loaded, and where the writer's stores came in.
    std::string describe() const;

    // The reader's schedule points.
    void beforeLoad(void const* address, std::size_t size, std::memory_order order);
    virtual void beforeFence() {}
    virtual void beforeFileSize() = 0;
    PlaceOf placeOf;

protected:
    virtual void restart() = 0;

    // Decides what the load at `address` sees, and makes the memory there hold it.
    virtual void show(Place const& place, void const* address, std::memory_order order) = 0;

    // To be called once for each load, with the moment at which it sees the memory.
    void note(Place const& place, Moment moment, bool seesNews);
    void noteFileSize(Moment moment, bool seesNews);

    WriterHistory const& history_;
    StoreReplay& replay_;
    Choices choices_;

private:
    struct Load
    {
        Place place;  // of no bytes: the length of the slot file
        Moment moment;
    };

    unsigned const endless_;
    unsigned sawNothingNew_ = 0;  // loads in a row
    std::vector<Load> loads_;
};

// Sends the loads of the reader's code to `memory` as long as it lives. `placeOf` says which byte
// of which file an address in the reader's mappings is.
class SchedulesLoads
{
public:
    SchedulesLoads(ScheduledMemory& memory, ScheduledMemory::PlaceOf placeOf);
    SchedulesLoads(SchedulesLoads const&) = delete;
    SchedulesLoads& operator=(SchedulesLoads const&) = delete;
    ~SchedulesLoads();
};

}  // namespace QuaskTesting
