// soak [SECONDS]
//
// Has tables of several shapes changed by writers that never pause, scans them in a loop with the
// real command line, checks every line, and says what was found. Also measures how fast the writers
// are, in the time that they have a processor: alone, while the other processor computes, and
// during the scans. Status 1 when anything was wrong.

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <sched.h>
#include <unistd.h>

#include "soak/checked_scan.h"
#include "soak/soak_writer.h"
#include "support/private_root.h"
#include "support/quask_program.h"

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;
using QuaskTesting::HotTable;
using QuaskTesting::ScanChecker;
using QuaskTesting::ScanCounts;
using QuaskTesting::SoakWriter;

struct Shape
{
    char const* name;
    double share;  // of the time, relative to the others'
    HotTable table;
};

std::vector<Shape> const shapes{
    {"one chain", 0.5, {.valueSize = 8, .buckets = 1, .stable = 10, .hot = 20}},
    {"small and hot", 1, {.valueSize = 8, .buckets = 64, .stable = 1000, .hot = 1000}},
    {"large", 3, {.valueSize = 8, .buckets = 1 << 17, .stable = 200000, .hot = 200000}},
    {"growing",
     3,
     {.valueSize = 8,
      .buckets = 1 << 18,
      .stable = 20,
      .hot = 40,
      .slots = 64,
      .maxSlots = 2000000}},
    {"64 bytes", 1, {.valueSize = 64, .buckets = 4096, .stable = 10000, .hot = 10000}},
    {"1,000 bytes", 1, {.valueSize = 1000, .buckets = 256, .stable = 500, .hot = 500}},
};

// Set by a signal: finish, and say what was seen so far.
volatile std::sig_atomic_t interrupted = 0;

// Changes made while a phase was on, and how long the writer had its processor: other programs that
// take it away from the writer do not count.
struct Rate
{
    double changes = 0;
    double seconds = 0;

    double perSecond() const { return seconds > 0 ? changes / seconds : 0; }
    Rate& operator+=(Rate const& other)
    {
        changes += other.changes;
        seconds += other.seconds;
        return *this;
    }
};

struct Result
{
    ScanCounts counts;
    std::uint64_t violations = 0;
    unsigned failures = 0;
    unsigned tables = 0;
    Rate alone;
    Rate besideComputing;
    Rate besideScans;
};

// The processors that writers and everything else stay on; -1, -1 when there is only one.
struct Processors
{
    int writer = -1;
    int scans = -1;
};

Processors chooseProcessors()
{
    cpu_set_t set;
    CPU_ZERO(&set);
    sched_getaffinity(0, sizeof set, &set);
    std::vector<int> usable;
    for (int i = 0; i < CPU_SETSIZE; ++i) {
        if (CPU_ISSET(static_cast<std::size_t>(i), &set)) {
            usable.push_back(i);
        }
    }
    if (usable.size() < 2) {
        return {};
    }
    CPU_ZERO(&set);
    CPU_SET(static_cast<std::size_t>(usable[1]), &set);
    sched_setaffinity(0, sizeof set, &set);
    return {usable[0], usable[1]};
}

void computeUntil(Clock::time_point end)
{
    std::uint64_t volatile sum = 0;
    while (Clock::now() < end && interrupted == 0) {
        for (std::uint64_t i = 0; i < 10000; ++i) {
            sum = sum + i * i;
        }
    }
}

template <typename Work>
Rate measured(SoakWriter const& writer, Work const& work)
{
    std::uint64_t const changes = writer.changes();
    double const start = writer.processorSeconds();
    work();
    return {static_cast<double>(writer.changes() - changes), writer.processorSeconds() - start};
}

class Soak
{
public:
    explicit Soak(double seconds) : seconds_(seconds)
    {
        for (Shape const& shape : shapes) {
            shares_ += shape.share;
        }
    }

    // True when nothing was wrong.
    bool run()
    {
        std::printf("%-13s %8s %13s %11s %11s %6s %35s %7s\n", "", "", "", "chain", "lookaside", "",
                    "million changes a processor second", "");
        std::printf("%-13s %8s %13s %11s %11s %6s %10s %11s %10s %7s\n", "table", "scans",
                    "elements", "restarts", "hits", "wrong", "alone", "computing", "scanned",
                    "ratio");
        Result total;
        for (Shape const& shape : shapes) {
            if (interrupted == 0) {
                Result const result = soak(shape);
                print(shape.name, result);
                add(total, result);
            }
        }
        print("all", total);
        return total.violations == 0 && total.failures == 0;
    }

private:
    Result soak(Shape const& shape)
    {
        Result result;
        auto const end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                            Seconds(seconds_ * shape.share / shares_));
        do {
            soakTable(shape, end, result);
        } while (Clock::now() < end && interrupted == 0 && result.failures == 0);
        return result;
    }

    // One table, until the end, or until it is full.
    void soakTable(Shape const& shape, Clock::time_point end, Result& result)
    {
        std::string const directory = root_.path() + "/table";
        std::filesystem::remove_all(directory);
        SoakWriter const writer(directory, shape.table, processors_.writer);
        ScanChecker checker(shape.table);
        ++result.tables;
        bool const grows = shape.table.maxSlots != 0;
        bool first = true;
        while ((first || Clock::now() < end) && interrupted == 0 && result.failures == 0 &&
               !(grows && !first && writer.isFull())) {
            first = false;
            // A tenth of the time each for the two comparisons.
            auto const slice = std::chrono::milliseconds(seconds_ < 30 ? 20 : 200);
            result.alone += measured(writer, [&] { usleep(useconds_t(slice.count()) * 1000); });
            result.besideComputing += measured(writer, [&] { computeUntil(Clock::now() + slice); });
            result.besideScans += measured(writer, [&] {
                auto const pause = Clock::now() + 8 * slice;
                do {
                    scan(checker, result);
                } while (Clock::now() < pause && interrupted == 0 && result.failures == 0);
            });
            if (!writer.isAlive()) {
                fail("the writer died", result);
            }
        }
        add(result.counts, checker.counts());
        result.violations += checker.violationCount();
        for (std::string const& violation : checker.violations()) {
            std::fprintf(stderr, "%s: %s\n", shape.name, violation.c_str());
        }
    }

    void scan(ScanChecker& checker, Result& result)
    {
        std::string const problem =
            QuaskTesting::checkedScan(QuaskTesting::quask(root_, {"table"}), checker);
        // An interrupt from the keyboard ends the scan, too.
        if (!problem.empty() && interrupted == 0) {
            fail("a scan ended with " + problem, result);
        }
    }

    static void fail(std::string const& problem, Result& result)
    {
        ++result.failures;
        std::fprintf(stderr, "%s\n", problem.c_str());
    }

    static void add(ScanCounts& total, ScanCounts const& counts)
    {
        total.scans += counts.scans;
        total.elements += counts.elements;
        total.lookasideValues += counts.lookasideValues;
        total.lookasideHits += counts.lookasideHits;
        total.restarts += counts.restarts;
    }

    static void add(Result& total, Result const& result)
    {
        add(total.counts, result.counts);
        total.violations += result.violations;
        total.failures += result.failures;
        total.tables += result.tables;
        total.alone += result.alone;
        total.besideComputing += result.besideComputing;
        total.besideScans += result.besideScans;
    }

    static void print(char const* name, Result const& result)
    {
        double const alone = result.alone.perSecond();
        double const scanned = result.besideScans.perSecond();
        std::printf("%-13s %8llu %13llu %11llu %11llu %6llu %10.2f %11.2f %10.2f %7.3f\n", name,
                    static_cast<unsigned long long>(result.counts.scans),
                    static_cast<unsigned long long>(result.counts.elements),
                    static_cast<unsigned long long>(result.counts.restarts),
                    static_cast<unsigned long long>(result.counts.lookasideHits),
                    static_cast<unsigned long long>(result.violations + result.failures),
                    alone / 1e6, result.besideComputing.perSecond() / 1e6, scanned / 1e6,
                    alone > 0 ? scanned / alone : 0);
        std::fflush(stdout);
    }

    double const seconds_;
    double shares_ = 0;
    QuaskTesting::PrivateRoot root_;
    Processors const processors_ = chooseProcessors();
};

}  // namespace

int main(int argc, char** argv)
{
    struct sigaction action
    {};
    action.sa_handler = [](int) { interrupted = 1; };
    for (int const number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaction(number, &action, nullptr);
    }
    try {
        double const seconds = argc > 1 ? std::stod(argv[1]) : 60;
        bool const sound = Soak(seconds).run();
        return interrupted != 0 ? 130 : sound ? 0 : 1;
    } catch (std::exception const& problem) {
        std::fprintf(stderr, "soak: %s\n", problem.what());
        return 2;
    }
}
