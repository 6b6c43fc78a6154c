#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/hot_writer.h"

namespace QuaskTesting {

// What scans of a hot table have shown so far.
struct ScanCounts
{
    std::uint64_t scans = 0;
    std::uint64_t elements = 0;
    std::uint64_t lookasideValues = 0;  // marked "*"
    std::uint64_t lookasideHits = 0;    // as printed at the end of the scans
    std::uint64_t restarts = 0;         // likewise
};

// Checks scans of one hot table, in the plain style, line by line: every value whole and no older
// than one shown before, every element in its bucket, every stable element exactly once per scan,
// the buckets in order, the texts as they should be.
class ScanChecker
{
public:
    explicit ScanChecker(HotTable const& table);

    // Checks one whole scan's output.
    void check(std::string_view scan);

    // The same piece by piece: begin(), then take() with whole lines, then end().
    void begin();
    void take(std::string_view lines);
    void end();

    ScanCounts const& counts() const { return counts_; }

    // What was wrong, the first few in words; the number of all.
    std::vector<std::string> const& violations() const { return violations_; }
    std::uint64_t violationCount() const { return violationCount_; }

private:
    void checkLine(std::string_view line);
    void checkValue(std::uint32_t bucket, std::string_view bytes);
    void violation(std::string const& what, std::string_view where);

    HotTable table_;
    std::vector<bool> stableSeen_;
    std::vector<std::uint32_t> generations_;  // the newest shown of each hot element
    std::string value_;
    std::uint64_t nextBucket_ = 0;
    std::string tail_;  // what came after the lines of buckets
    ScanCounts counts_;
    std::vector<std::string> violations_;
    std::uint64_t violationCount_ = 0;
};

}  // namespace QuaskTesting
