#include "stat/walk_report.h"

#include <atomic>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <string>

#include <unistd.h>

#include "base/exception.h"
#include "mem/atomics.h"
#include "report/scan_preparation.h"
#include "stat/chain_statistics.h"
#include "stat/histogram.h"
#include "stat/row_report.h"
#include "stat/safe_text.h"
#include "stat/walk_progress.h"
#include "table/direction.h"
#include "table/quask_reader_generic.h"

namespace Quask::Stat {
namespace {

// relaxed: a figure that stands for itself.
std::uint32_t occupiedSlots(QuaskReaderGeneric const& reader)
{
    return Mem::Atomics::load32(&reader.liveSlotsHeader().occupiedSlots, std::memory_order_relaxed);
}

struct Counts
{
    std::uint32_t before;
    std::uint32_t after;
};

// What it means that the walk found another number of elements than the header counts.
char const* meaning(std::uint64_t found, Counts const& counted, bool hasWriter)
{
    if (found == counted.before && found == counted.after) {
        return "as many as the header counts";
    }
    if (hasWriter || counted.before != counted.after) {
        return "a difference is normal while a writer inserts and removes";
    }
    return "a writer has died on the way, and the next one will count again";
}

void print(ChainStatistics const& chains, QuaskReaderGeneric const& reader, Counts const& counted,
           bool hasWriter)
{
    std::ostream& out = std::cout;
    out << std::fixed << std::setprecision(2);
    out << "\nWalk\n  elements        " << chains.elements() << " found, " << counted.before
        << " counted before, " << counted.after << " after;\n                  "
        << meaning(chains.elements(), counted, hasWriter) << "\n";
    out << "  load            " << chains.mean() << " elements per bucket\n";
    out << "  empty buckets   " << chains.emptyBuckets() << " of " << chains.buckets() << ", "
        << std::setprecision(0) << chains.idealEmptyBuckets() << " with an ideal hash\n"
        << std::setprecision(2);
    out << "  chain length    mean " << chains.mean() << ", standard deviation "
        << chains.deviation() << ", " << chains.idealDeviation() << " with an ideal hash\n";
    out << "  longest chains ";
    for (auto const& [length, bucket] : chains.longest()) {
        out << " " << length << " (bucket[" << std::hex << bucket << std::dec << "])";
    }
    out << (chains.longest().empty() ? " none\n" : "\n");
    out << "  restarts        " << reader.chainRestarts() << "\n";
    out << "  lookaside hits  " << reader.lookasideHits() << "\n\nLength of chains, buckets\n";
    out << histogramText(chains.lengths(), Terminal::ofStandardOutput().width, isUtf8Locale());
}

}  // namespace

int printWalk(TableLook const& table)
{
    QuaskReaderGeneric reader(table.name);
    if (!prepareScan(reader, table.name, std::cerr)) {
        return 1;
    }
    bool const saysProgress = isatty(STDERR_FILENO) == 1;
    Counts counted{occupiedSlots(reader), 0};
    try {
        WalkProgress progress(saysProgress ? &std::cerr : nullptr,
                              BucketTable::Header(reader.liveBucketsHeader()).numBuckets);
        ChainStatistics chains([&progress](unsigned done) { progress.show(done); });
        std::cout.flush();
        reader.scan(chains, 0, 0xffffffff, Direction::upward, true);
        counted.after = occupiedSlots(reader);
        print(chains, reader, counted, table.clients.count(Role::writer) > 0);
    } catch (Dovan::Exception const& exception) {
        std::cout.flush();
        std::cerr << "quask-stat: " << terminalText(exception.what(), isUtf8Locale()) << std::endl;
        return 1;
    }
    return 0;
}

}  // namespace Quask::Stat
