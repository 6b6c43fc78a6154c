#include "stat/options.h"

#include <charconv>
#include <iostream>
#include <string_view>
#include <system_error>

#include <getopt.h>

namespace Quask::Stat {
namespace {

using Job = Options::Job;

constexpr int checkOption = 256;  // no letter

constexpr option longOptions[] = {
    {"check", optional_argument, nullptr, checkOption},
    {"count", required_argument, nullptr, 'c'},
    {"help", no_argument, nullptr, 'h'},
    {"interval", required_argument, nullptr, 'i'},
    {"json", no_argument, nullptr, 'J'},
    {"list-columns", no_argument, nullptr, 'H'},
    {"metrics", no_argument, nullptr, 'm'},
    {"noheadings", no_argument, nullptr, 'n'},
    {"output", required_argument, nullptr, 'o'},
    {"raw", no_argument, nullptr, 'r'},
    {"verbose", no_argument, nullptr, 'v'},
    {"version", no_argument, nullptr, 'V'},
    {nullptr, 0, nullptr, 0},
};

// The whole text as a number between these two.
template <typename Number>
bool readNumber(std::string_view text, Number least, Number most, Number& number)
{
    char const* const end = text.data() + text.size();
    auto const [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end && number >= least && number <= most;
}

// "WARNING" or "WARNING,CRITICAL".
bool readLimits(std::string_view text, Limits& limits)
{
    std::size_t const comma = text.find(',');
    std::string_view const warning = text.substr(0, comma);
    return readNumber(warning, 0u, 100u, limits.warning) &&
           (comma == std::string_view::npos ||
            readNumber(text.substr(comma + 1), limits.warning, 100u, limits.critical));
}

bool fail(std::string const& reason)
{
    std::cerr << "quask-stat: " << reason << std::endl;
    return false;
}

// The jobs that another one takes the place of.
bool choose(Job job, Options& options)
{
    if (options.job != Job::rows && options.job != job) {
        return fail("of -H, -m, -v and --check only one can be asked for");
    }
    options.job = job;
    return true;
}

bool chooseFormat(RowFormat::Kind format, Options& options)
{
    if (options.format != RowFormat::Kind::table && options.format != format) {
        return fail("-J and -r exclude each other");
    }
    options.format = format;
    return true;
}

bool takeInterval(std::string_view text, Options& options)
{
    return readNumber(text, 0.001, 86400.0, options.interval.emplace()) ||
           fail("not a number of seconds: " + std::string(text));
}

bool takeCount(std::string_view text, Options& options)
{
    constexpr auto most = static_cast<std::uint64_t>(-1);
    return readNumber(text, std::uint64_t{1}, most, options.count.emplace()) ||
           fail("not a number of intervals: " + std::string(text));
}

bool takeLimits(char const* text, Options& options)
{
    return choose(Job::check, options) &&
           (text == nullptr || readLimits(text, options.limits) ||
            fail("not two limits from 0 to 100, the lower one first: " + std::string(text)));
}

// False when the option makes no sense.
bool take(int letter, Options& options)
{
    switch (letter) {
        case 'c':
            return takeCount(optarg, options);
        case 'H':
            return choose(Job::listColumns, options);
        case 'i':
            return takeInterval(optarg, options);
        case 'J':
            return chooseFormat(RowFormat::Kind::json, options);
        case 'm':
            return choose(Job::metrics, options);
        case 'n':
            options.hasHeadings = false;
            return true;
        case 'o':
            options.columns = optarg;
            return true;
        case 'r':
            return chooseFormat(RowFormat::Kind::raw, options);
        case 'v':
            return choose(Job::details, options);
        case checkOption:
            return takeLimits(optarg, options);
        default:
            return false;  // getopt has said why
    }
}

// Whether each option that shapes a report meets that report.
bool isConsistent(Options const& options)
{
    bool const hasJson = options.job == Job::rows || options.job == Job::details;
    if (options.format == RowFormat::Kind::json && !hasJson) {
        return fail("-J is for rows and -v");
    }
    bool const shapesRows = !options.hasHeadings || options.columns || options.interval ||
                            options.format == RowFormat::Kind::raw;
    if (options.job != Job::rows && shapesRows) {
        return fail("-i, -n, -o and -r are for rows");
    }
    if (options.count && !options.interval) {
        return fail("-c needs -i");
    }
    return true;
}

}  // namespace

std::optional<Options> parseOptions(int argc, char** argv)
{
    Options options;
    int letter = 0;
    while ((letter = getopt_long(argc, argv, "c:Hhi:JmnVo:rv", longOptions, nullptr)) != -1) {
        if (letter == 'h' || letter == 'V') {
            options.job = letter == 'h' ? Job::help : Job::version;
            return options;
        }
        if (!take(letter, options)) {
            return std::nullopt;
        }
    }
    if (argc - optind > 1) {
        fail("there is more than one EXPR");
        return std::nullopt;
    }
    if (optind < argc) {
        options.expression = argv[optind];
    }
    return isConsistent(options) ? std::optional(options) : std::nullopt;
}

}  // namespace Quask::Stat
