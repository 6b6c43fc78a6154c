#include "support/scan_checker.h"

#include <algorithm>
#include <charconv>

#include "support/proving_values.h"

namespace QuaskTesting {
namespace {

// Takes `prefix` off the front of `text`; false when it is not there.
bool takeText(std::string_view& text, std::string_view prefix)
{
    if (!text.starts_with(prefix)) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

template <typename Number>
bool takeNumber(std::string_view& text, int base, Number& number)
{
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc();
}

int digit(char c)
{
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : c >= '0' && c <= '9' ? c - '0' : -1000;
}

// Takes the hexadecimal text of as many bytes as `bytes` has.
bool takeBytes(std::string_view& text, std::string& bytes)
{
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % 4 == 0 && !takeText(text, " ")) {
            return false;
        }
        int const value = text.size() < 2 ? -1 : 16 * digit(text[0]) + digit(text[1]);
        if (value < 0) {
            return false;
        }
        bytes[i] = static_cast<char>(value);
        text.remove_prefix(2);
    }
    return true;
}

}  // namespace

ScanChecker::ScanChecker(HotTable const& table)
    : table_(table), stableSeen_(table.stable), value_(table.valueSize, '\0')
{}

void ScanChecker::check(std::string_view scan)
{
    begin();
    take(scan);
    end();
}

void ScanChecker::begin()
{
    std::fill(stableSeen_.begin(), stableSeen_.end(), false);
    nextBucket_ = 0;
    tail_.clear();
    ++counts_.scans;
}

void ScanChecker::take(std::string_view lines)
{
    while (tail_.empty() && takeText(lines, "bucket[")) {
        std::size_t const end = lines.find('\n');
        checkLine(lines.substr(0, end));
        lines.remove_prefix(end == lines.npos ? lines.size() : end + 1);
    }
    tail_.append(lines);
}

void ScanChecker::end()
{
    std::string_view scan = tail_;
    std::uint64_t hits = 0;
    std::uint64_t restarts = 0;
    if (!takeText(scan, "Lookaside hits: ") || !takeNumber(scan, 10, hits) ||
        !takeText(scan, "\nChain restarts: ") || !takeNumber(scan, 10, restarts) || scan != "\n") {
        violation("the scan does not end with its counts", scan);
    }
    counts_.lookasideHits += hits;
    counts_.restarts += restarts;
    auto const missing = std::count(stableSeen_.begin(), stableSeen_.end(), false);
    if (missing != 0) {
        violation(std::to_string(missing) + " stable elements are missing", {});
    }
}

void ScanChecker::checkLine(std::string_view line)
{
    std::string_view rest = line;
    std::uint32_t bucket = 0;
    if (!takeNumber(rest, 16, bucket) || !takeText(rest, "]")) {
        return violation("no bucket number", line);
    }
    if (bucket < nextBucket_ || bucket >= table_.buckets) {
        violation("bucket out of order", line);
    }
    nextBucket_ = std::uint64_t{bucket} + 1;
    while (rest != " ffffffff --> none") {
        std::uint32_t slot = 0;
        if (!takeText(rest, " ") || !takeNumber(rest, 16, slot) || !takeText(rest, "-->")) {
            return violation("no element", line);
        }
        counts_.lookasideValues += takeText(rest, "*") ? 1 : 0;
        if (!takeBytes(rest, value_)) {
            return violation("no value", line);
        }
        ++counts_.elements;
        checkValue(bucket, value_);
    }
}

void ScanChecker::checkValue(std::uint32_t bucket, std::string_view bytes)
{
    std::optional<Proven> const proven = provenBy(bytes);
    if (!proven) {
        return violation("a value is torn, bucket", std::to_string(bucket));
    }
    if (bucketOfKey(proven->key, table_.buckets) != bucket) {
        violation("an element in a foreign bucket", std::to_string(proven->key));
    }
    std::uint32_t const number = hotKey(proven->key);
    if (isStableKey(proven->key)) {
        if (number >= stableSeen_.size() || stableSeen_[number]) {
            return violation("a stable element twice", std::to_string(number));
        }
        stableSeen_[number] = true;
        return;
    }
    if (generations_.size() <= number) {
        generations_.resize(std::size_t{number} + 1);
    }
    // Modulo 2^24, as a small value has it: older means up to half of that behind.
    std::uint32_t const ahead = (proven->generation - generations_[number]) & 0xffffff;
    if (table_.maxSlots == 0 && ahead >= 0x800000) {
        violation("a value older than one shown before", std::to_string(number));
    }
    generations_[number] = proven->generation;
}

void ScanChecker::violation(std::string const& what, std::string_view where)
{
    ++violationCount_;
    if (violations_.size() < 10) {
        violations_.push_back(what + ": " + std::string(where.substr(0, 300)));
    }
}

}  // namespace QuaskTesting
