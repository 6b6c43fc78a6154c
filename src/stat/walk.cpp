#include "stat/walk.h"

#include <atomic>
#include <iostream>
#include <string>

#include <unistd.h>

#include "base/exception.h"
#include "mem/atomics.h"
#include "stat/chain_counter.h"
#include "stat/safe_text.h"
#include "stat/walk_progress.h"
#include "table/bucket_table.h"
#include "table/direction.h"
#include "table/quask_reader_generic.h"

namespace Quask::Stat {
namespace {

// relaxed: a figure that stands for itself.
std::uint32_t occupiedSlots(QuaskReaderGeneric const& reader)
{
    return Mem::Atomics::load32(&reader.liveSlotsHeader().occupiedSlots, std::memory_order_relaxed);
}

// False with the reason in `problem` when there is nothing to walk.
bool attach(QuaskReaderGeneric& reader, TableLook const& table, std::string& problem)
{
    if (!table.figures.main) {
        problem = table.figures.problem;
        return false;
    }
    // In this order: what is mapped has the names, which are those of the files that were looked
    // at.
    if (!reader.attach() || !hasFilesOf(table.name, table.figures) || !reader.isCurrent()) {
        problem = "it has been replaced or removed";
        return false;
    }
    return reader.validate(problem);
}

Difference differenceOf(Walk const& walk, bool hasWriter)
{
    if (walk.chains.elements() == walk.countedBefore &&
        walk.chains.elements() == walk.countedAfter) {
        return Difference::none;
    }
    return hasWriter || walk.countedBefore != walk.countedAfter ? Difference::normal
                                                                : Difference::writerDied;
}

Walk walkAttached(QuaskReaderGeneric& reader, bool hasWriter)
{
    Walk walk;
    WalkProgress progress(isatty(STDERR_FILENO) == 1 ? &std::cerr : nullptr,
                          BucketTable::Header(reader.liveBucketsHeader()).numBuckets);
    ChainCounter counter(walk.chains, progress);
    walk.countedBefore = occupiedSlots(reader);
    reader.scan(counter, 0, 0xffffffff, Direction::upward, true);
    walk.countedAfter = occupiedSlots(reader);
    walk.difference = differenceOf(walk, hasWriter);
    walk.restarts = reader.chainRestarts();
    walk.lookasideHits = reader.lookasideHits();
    return walk;
}

}  // namespace

std::optional<Walk> walkTable(TableLook const& table)
{
    QuaskReaderGeneric reader(table.name);
    std::string problem;
    try {
        if (attach(reader, table, problem)) {
            return walkAttached(reader, table.clients.count(Role::writer) > 0);
        }
    } catch (Dovan::Exception const& exception) {
        problem = exception.what();
    }
    std::cerr << "quask-stat: "
              << terminalText(table.name + " cannot be walked: " + problem, isUtf8Locale())
              << std::endl;
    return std::nullopt;
}

}  // namespace Quask::Stat
