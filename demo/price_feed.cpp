// price_feed TABLE: keeps a table of prices that change all the time, to look at with the tool. At
// nearly every moment one of them is being rewritten. Prints "ready" once the table is there;
// removes it when it ends.

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <getopt.h>

#include "base/debug_handler.h"
#include "stop.h"
#include "support/root_path.h"
#include "support/shared_store.h"
#include "support/table_writer.h"
#include "support/util.h"

namespace {

using namespace std::chrono_literals;

constexpr char const* help =
    "Usage: price_feed [OPTIONS] TABLE\n"
    "Keeps a table of prices changing until it gets SIGINT or SIGTERM or, if that is a pipe or a\n"
    "terminal, its standard input ends.\n"
    "  --seconds N  end after N seconds\n"
    "  --rate N     change N prices per second (20); each change takes until the next one\n"
    "  --burst N    spend N milliseconds of each second changing as many as possible (200)\n";

struct Options
{
    std::string table;
    std::optional<std::chrono::seconds> seconds;
    unsigned rate = 20;
    std::chrono::milliseconds burst = 200ms;
};

// Nothing when the command line is not understood.
std::optional<Options> parse(int argc, char** argv)
{
    static option const longOptions[] = {{"seconds", required_argument, nullptr, 's'},
                                         {"rate", required_argument, nullptr, 'r'},
                                         {"burst", required_argument, nullptr, 'b'},
                                         {nullptr, 0, nullptr, 0}};
    Options options;
    for (int letter; (letter = getopt_long(argc, argv, "", longOptions, nullptr)) != -1;) {
        if (letter == '?') {
            return std::nullopt;
        }
        char* end = nullptr;
        unsigned long const number = std::strtoul(optarg, &end, 10);
        if (*optarg < '0' || *optarg > '9' || *end != '\0' || number > 1'000'000) {
            return std::nullopt;
        }
        if (letter == 's') {
            options.seconds = std::chrono::seconds(number);
        } else if (letter == 'r') {
            options.rate = static_cast<unsigned>(number);
        } else {
            options.burst = std::chrono::milliseconds(number);
        }
    }
    if (optind + 1 != argc || *argv[optind] == '\0') {
        return std::nullopt;
    }
    options.table = argv[optind];
    return options;
}

// The prices and the table that they are written to. The bucket of an instrument follows from its
// name's checksum; while it is not listed it has no slot.
class Market
{
public:
    explicit Market(std::string const& directory) : writer_(directory, shape())
    {
        for (char const* const name :
             {"ALDER", "ASH",  "ASPEN",  "BEECH", "BIRCH",  "BOX",    "CEDAR",  "CHERRY", "ELDER",
              "ELM",   "FIR",  "HAZEL",  "HOLLY", "LARCH",  "LIME",   "MAPLE",  "OAK",    "PEAR",
              "PINE",  "PLUM", "POPLAR", "ROWAN", "SPRUCE", "WALNUT", "WILLOW", "YEW"}) {
            auto const length = static_cast<unsigned>(std::strlen(name));
            instruments_.push_back({name, Quask::Util::hash(name, length) % writer_.numBuckets(), 0,
                                    1000 + static_cast<int>(random_() % 20000), std::nullopt});
            instruments_.back().cents = instruments_.back().usual;
            list(instruments_.back());
        }
    }

    // Another price for any instrument that is listed.
    void changePrice()
    {
        Instrument* instrument = &any();
        while (!instrument->slot) {
            instrument = &any();
        }
        int const usual = instrument->usual;
        int const change = static_cast<int>(random_() % 41) - 20;
        instrument->cents =
            std::clamp(instrument->cents + change, usual - usual / 5, usual + usual / 5);
        writer_.update(*instrument->slot, text(*instrument));
    }

    void notifyReaders() { writer_.notify(); }

    // Takes any instrument off the list or, when a few are off it, puts one of those back.
    void changeList()
    {
        if (unlisted_.size() == 4) {
            Instrument* const instrument = unlisted_.front();
            unlisted_.erase(unlisted_.begin());
            list(*instrument);
            return;
        }
        Instrument& instrument = any();
        if (instrument.slot) {
            writer_.remove(instrument.bucket, *instrument.slot);
            instrument.slot.reset();
            unlisted_.push_back(&instrument);
            writer_.notify();
        }
    }

private:
    struct Instrument
    {
        char const* name;
        std::uint32_t bucket;
        int cents;
        int usual;  // the price stays within a fifth of it
        std::optional<std::uint32_t> slot;
    };

    static QuaskTesting::TableShape shape()
    {
        QuaskTesting::TableShape shape;
        shape.valueType = "char[16]";
        shape.valueSize = 16;
        shape.classType = "PriceFeed::Quote";
        shape.buckets = 28;
        shape.slots = 16;
        shape.maxSlots = 64;
        return shape;
    }

    Instrument& any() { return instruments_[random_() % instruments_.size()]; }

    void list(Instrument& instrument)
    {
        instrument.slot = writer_.insert(instrument.bucket, text(instrument));
        writer_.notify();
    }

    // The value of 16 bytes, valid until the next call.
    std::string_view text(Instrument const& instrument)
    {
        text_.fill('\0');
        char* out = std::copy_n(instrument.name, std::strlen(instrument.name), text_.data());
        *out++ = ' ';
        out = std::to_chars(out, text_.end(), instrument.cents / 100).ptr;
        *out++ = '.';
        *out++ = static_cast<char>('0' + instrument.cents / 10 % 10);
        *out++ = static_cast<char>('0' + instrument.cents % 10);
        return {text_.data(), text_.size()};
    }

    QuaskTesting::TableWriter writer_;
    std::vector<Instrument> instruments_;
    std::vector<Instrument*> unlisted_;
    std::mt19937 random_{1};
    std::array<char, 16> text_{};
};

// While it lives, an update stands still at the moment at which readers know that the value is
// being rewritten, and no byte of it has been: at the second fence of an update.
class PauseInUpdate final : private QuaskTesting::StoreObserver
{
public:
    PauseInUpdate(Demo::Stop& stop, Demo::Clock::time_point until) : stop_(stop), until_(until) {}

private:
    void beforeReleaseFence() override
    {
        if (++fences_ == 2) {
            stop_.comesBefore(until_);
        }
    }
    void beforeStore(void* /*address*/, std::size_t /*size*/, void const* /*bytes*/,
                     std::memory_order /*order*/) override
    {}
    void beforeLengthen(std::uint64_t /*size*/) override {}

    Demo::Stop& stop_;
    Demo::Clock::time_point until_;
    int fences_ = 0;
    QuaskTesting::ObserveStores observed_{*this};
};

void changePriceSlowly(Market& market, Demo::Stop& stop, Demo::Clock::time_point until)
{
    PauseInUpdate const pause(stop, until);
    market.changePrice();
}

void run(Market& market, Demo::Stop& stop, Options const& options)
{
    Demo::Clock::time_point const start = Demo::Clock::now();
    auto const isOver = [&] {
        return options.seconds && Demo::Clock::now() >= start + *options.seconds;
    };
    for (Demo::Clock::time_point second = start; !isOver(); second += 1s) {
        for (unsigned i = 0;
             Demo::Clock::now() < second + options.burst && Demo::Clock::now() < second + 1s;) {
            for (int j = 0; j < 1000; ++j, ++i) {
                if (i % 4 == 0) {
                    market.changeList();
                } else {
                    market.changePrice();
                }
            }
            if (stop.comesBefore(Demo::Clock::now())) {
                return;
            }
        }
        market.changeList();
        for (unsigned i = 1; i <= options.rate; ++i) {
            Demo::Clock::time_point const time = second + i * 1'000'000us / options.rate;
            if (time < Demo::Clock::now()) {
                continue;
            }
            changePriceSlowly(market, stop, time);
            market.notifyReaders();
            if (stop.comesBefore(time) || isOver()) {
                return;
            }
        }
        if (stop.comesBefore(second + 1s)) {
            return;
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    std::optional<Options> const options = parse(argc, argv);
    if (!options) {
        std::fputs(help, stderr);
        return 1;
    }
    std::unique_ptr<Dovan::Platform::DebugHandler> const handler(
        Dovan::Platform::getDebugHandler("price_feed"));
    bool const hadRoot = std::filesystem::exists(Quask::rootDirectory());
    Quask::RootPath const table(*handler, options->table, true);
    if (std::filesystem::exists(table.directory() + "/buckets")) {
        std::fprintf(stderr,
                     "price_feed: %s is a table already; remove it if no process keeps it\n",
                     table.directory().c_str());
        return 1;
    }
    int status = 0;
    try {
        Demo::Stop stop;
        Market market(table.directory());
        std::puts("ready");
        std::fflush(stdout);
        run(market, stop, *options);
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "price_feed: %s\n", failure.what());
        status = 1;
    }
    std::error_code ignored;
    for (QuaskTesting::TableFile const file : QuaskTesting::allTableFiles) {
        std::filesystem::remove(table.directory() + "/" + QuaskTesting::fileName(file), ignored);
    }
    std::filesystem::remove(table.directory(), ignored);
    if (!hadRoot) {
        std::filesystem::remove(Quask::rootDirectory(), ignored);  // unless there are other tables
    }
    return status;
}
