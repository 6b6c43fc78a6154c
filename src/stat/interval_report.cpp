#include "stat/interval_report.h"

#include <chrono>
#include <cstdint>
#include <iostream>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "stat/look.h"
#include "stat/row_report.h"
#include "stat/screen.h"

namespace Quask::Stat {
namespace {

using Clock = std::chrono::steady_clock;

Clock::duration intervalOf(Options const& options)
{
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(*options.interval));
}

// The looks, each with the one before.
class Looks
{
public:
    explicit Looks(Options const& options) : options_(options), columns_(columnsOf(options)) {}

    bool hasColumns() const { return !columns_.empty(); }

    // False when the tables cannot be looked at.
    bool next()
    {
        std::swap(before_, now_);
        return lookAtTables(options_.expression, now_.emplace());
    }

    Look const& now() const { return *now_; }

    std::string rows(Terminal const& terminal) const
    {
        return rowsOf(*now_, before_ ? &*before_ : nullptr, columns_, options_, terminal);
    }

private:
    Options const& options_;
    std::vector<Column const*> const columns_;
    std::optional<Look> before_;
    std::optional<Look> now_;
};

int printBlocks(Looks& looks, Options const& options)
{
    if (!looks.next()) {
        return sayNoSearch();
    }
    sayUnread(looks.now().unreadProcesses);
    for (std::uint64_t done = 0; !options.count || done < *options.count; ++done) {
        std::this_thread::sleep_until(looks.now().time + intervalOf(options));
        if (!looks.next()) {
            return sayNoSearch();
        }
        std::cout << (done == 0 ? "" : "\n") << looks.rows({}) << std::flush;
        if (!std::cout) {
            return 1;
        }
    }
    return 0;
}

std::string display(Looks const& looks, Terminal const& terminal)
{
    std::string text;
    if (std::size_t const unread = looks.now().unreadProcesses; unread > 0) {
        text = std::to_string(unread) + (unread == 1 ? " process" : " processes") +
               " could not be looked into; clients may be missing\n";
    }
    return text + looks.rows(terminal);
}

// How the display came to its end.
enum class End
{
    asAsked,  // after the number of intervals, or by q
    noSearch,
};

End showDisplay(Looks& looks, Options const& options)
{
    Screen screen;
    std::uint64_t done = 0;
    for (bool isDue = true;;) {
        if (isDue && !looks.next()) {
            return End::noSearch;
        }
        Terminal const terminal = Terminal::ofStandardOutput();
        screen.draw(display(looks, terminal), terminal.height);
        if (options.count && done == *options.count) {
            return End::asAsked;
        }
        switch (screen.wait(looks.now().time + intervalOf(options))) {
            case Screen::Event::timeout:
                isDue = true;
                ++done;
                break;
            case Screen::Event::resized:
                isDue = false;
                break;
            case Screen::Event::quit:
                return End::asAsked;
            case Screen::Event::terminated:
                screen.end();
                return End::asAsked;
        }
    }
}

}  // namespace

int printIntervals(Options const& options)
{
    Looks looks(options);
    if (!looks.hasColumns()) {
        return 1;
    }
    Terminal const terminal = Terminal::ofStandardOutput();
    if (!terminal.isThere || options.format != RowFormat::Kind::table) {
        return printBlocks(looks, options);
    }
    if (showDisplay(looks, options) == End::noSearch) {
        return sayNoSearch();
    }
    if (options.count) {
        std::cout << looks.rows(terminal);
    }
    return 0;
}

}  // namespace Quask::Stat
