#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/exception.h"
#include "interleave/exploration.h"
#include "interleave/interleaved_memory.h"
#include "interleave/small_table.h"
#include "interleave/walk_checks.h"
#include "interleave/weakly_ordered_memory.h"
#include "interleave/writer_history.h"
#include "support/store_recorder.h"
#include "table/quask_reader_generic.h"

namespace QuaskTesting {

// Where the reader has the files of its table mapped.
ScheduledMemory::PlaceOf placesIn(Quask::QuaskReaderGeneric const& reader);

// Keeps the page after the reader's slots as long as it lives, so that the mapping has to move
// when it is to have one page more.
class Obstacle
{
public:
    explicit Obstacle(Quask::QuaskReaderGeneric const& reader);
    Obstacle(Obstacle const&) = delete;
    Obstacle& operator=(Obstacle const&) = delete;
    ~Obstacle();

private:
    void* page_;
};

// The walks that a scenario looks at, over the first buckets upward: with which checks, and by what
// they are recorded. run() says whether what was recorded counts.
template <typename Checks = Quask::AllWalkChecks, typename RecorderType = WalkRecorder>
struct ByChainWalk
{
    using Recorder = RecorderType;

    static bool run(Quask::QuaskReaderGeneric& reader, Recorder& recorder)
    {
        reader.scan<Checks>(recorder, 0, SmallTable::walkedBuckets, Quask::Direction::upward, true);
        return true;
    }
};

template <typename Checks = Quask::AllWalkChecks>
using InBatches = ByChainWalk<Checks, BatchRecorder>;

// A small table to which a writer does something, and whose readers are observed at that time. One
// at a time. `Memory` is InterleavedMemory or WeaklyOrderedMemory, made with `arguments`.
class Scenario
{
public:
    // Has the operations done one after the other.
    Scenario(SmallTable::Shape const& shape, std::vector<Operation> const& operations);

    // A writer that dies: with so many stores of the operation made, and more to make.
    struct Death
    {
        Operation operation;
        std::size_t stores;
    };

    // Another writer takes over, and does the operations.
    Scenario(SmallTable::Shape const& shape, Death const& death,
             std::vector<Operation> const& operations);

    // Whether all operations could be done.
    bool isPossible() const { return possible_; }

    // The stores that they made. A test may change them, for a writer that breaks the protocol.
    std::vector<StoreStep> stores;

    SmallTable& table() { return table_; }

    // Runs `execution` for all that the memory can do: it is given the memory and the figures to
    // add to, and returns what was wrong, or nothing. What it throws of the reader's exceptions is
    // wrong, too.
    template <typename Memory, typename Execution, typename... Arguments>
    Exploration exploreAll(Execution&& execution, Arguments... arguments)
    {
        WriterHistory const history(replay_, table_.directory(), stores);
        Memory memory(replay_, history, endless(), arguments...);
        return explore(memory, [&](Exploration& result) -> std::string {
            try {
                return execution(memory, result);
            } catch (Dovan::Exception const& exception) {
                return std::string("the reader throws: ") + exception.what();
            } catch (EndlessReading const&) {
                return "the reader does not end although the writer stands still";
            }
        });
    }

    // A walk over the two buckets.
    template <typename Memory, typename Walk = ByChainWalk<>, typename... Arguments>
    Exploration walk(Arguments... arguments)
    {
        // One serves all executions that leave its mapping as it was.
        std::optional<SetUpReader> reader;
        auto const execution = [&](ScheduledMemory& memory, Exploration& result) {
            if (!reader || reader->hasMapped()) {
                reader.reset();
                reader.emplace();
            }
            std::string const failure = reader->failure;
            SchedulesLoads const scheduling(memory, placesIn(reader->reader));
            return failure.empty() ? walkOnce<Walk>(memory, reader->reader, result) : failure;
        };
        return exploreAll<Memory>(execution, arguments...);
    }

    // The same with the reader's setup, during which the writer is at work already.
    template <typename Memory, typename Walk = ByChainWalk<>>
    Exploration setUpAndWalk()
    {
        return exploreAll<Memory>([&](ScheduledMemory& memory, Exploration& result) {
            Quask::QuaskReaderGeneric reader(SmallTable::tableName);
            SchedulesLoads const scheduling(memory, placesIn(reader));
            std::string const failure = setUp(reader);
            return failure.empty() ? walkOnce<Walk>(memory, reader, result) : failure;
        });
    }

private:
    // A reader that is set up while the writer is at rest.
    struct SetUpReader
    {
        // Whether it has mapped its files again since.
        bool hasMapped() const { return reader.readerStatistics().remaps != 0; }

        Quask::QuaskReaderGeneric reader{SmallTable::tableName};
        std::string const failure = setUp(reader);
        Obstacle const obstacle{reader};
    };

    // More loads in a row than any reader makes while the writer stands still, wherever that is.
    // The longest is a walk that reads a batch for nothing, ends the chain that it is on, maps the
    // slots again, walks that chain again, and the other one.
    unsigned endless();

    void carryOut(std::vector<Operation> const& operations);

    static std::string setUp(Quask::QuaskReaderGeneric& reader);

    template <typename Walk>
    std::string walkOnce(ScheduledMemory& memory, Quask::QuaskReaderGeneric& reader,
                         Exploration& result)
    {
        typename Walk::Recorder recorder(memory, table_.valueSize());
        auto const restarts = reader.chainRestarts();
        auto const lookasideHits = reader.lookasideHits();
        bool const counts = Walk::run(reader, recorder);
        result.restarts += reader.chainRestarts() - restarts;
        result.lookasideHits += reader.lookasideHits() - lookasideHits;
        result.remaps += reader.readerStatistics().remaps;
        result.movedRemaps += reader.readerStatistics().movedRemaps;
        if constexpr (Quask::BatchHandler<typename Walk::Recorder>) {
            result.batches += recorder.batches();
        }
        return counts ? violationIn(memory, recorder.chains(), SmallTable::walkedBuckets) : "";
    }

    SmallTable table_;
    StoreReplay replay_;
    bool possible_ = true;
};

// The scenarios of these operations, alone and followed by each of all of them, on tables with and
// without a free slot, as far as they are possible. `visit` is given each and its name.
template <typename Visit>
void forSinglesAndPairs(Operation const& first, Visit&& visit)
{
    for (std::uint32_t const freeSlots : {0u, 1u}) {
        SmallTable::Shape shape;
        shape.freeSlots = freeSlots;
        std::string const suffix = freeSlots == 0 ? " (no free slot)" : "";
        Scenario single(shape, {first});
        visit(single, first.name + suffix);
        for (Operation const& second : allOperations()) {
            Scenario pair(shape, {first, second});
            if (pair.isPossible()) {
                visit(pair, std::string(first.name) + ", " + second.name + suffix);
            }
        }
    }
}

}  // namespace QuaskTesting
