#include "base/debug_handler.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string_view>

namespace Dovan::Platform {
namespace {

std::optional<int> parseLevel(std::string_view text)
{
    int level = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return level;
}

// The highest level that `settings` enables for the channel, or -1. A channel's name may hold "="
// (a table's may), so the level is what follows the last one.
int enabledLevel(std::string_view settings, std::string_view channel)
{
    int enabled = -1;
    while (!settings.empty()) {
        std::string_view const item = settings.substr(0, settings.find(','));
        settings.remove_prefix(std::min(item.size() + 1, settings.size()));
        std::size_t const equals = item.rfind('=');
        if (equals != std::string_view::npos && item.substr(0, equals) != channel) {
            continue;
        }
        std::size_t const levelStart = equals == std::string_view::npos ? 0 : equals + 1;
        enabled = parseLevel(item.substr(levelStart)).value_or(enabled);
    }
    return enabled;
}

// A path may contain a newline; the message stays on one line.
std::string onOneLine(std::string const& text)
{
    std::string line;
    for (char const c : text) {
        c == '\n' ? line += "\\n" : line += c;
    }
    return line;
}

class StandardErrorHandler final : public DebugHandler
{
public:
    StandardErrorHandler(std::string const& name, int enabled) : name_(name), enabled_(enabled) {}

    bool isEnabled(int level) const override { return level <= enabled_; }

    void log(std::ostream& message, int level) override
    {
        auto const* const text = dynamic_cast<std::stringbuf*>(message.rdbuf());
        std::string const said = text != nullptr ? text->str() : std::string();
        std::cerr << onOneLine(name_ + " " + std::to_string(level) + ": " + said) + "\n"
                  << std::flush;
    }

private:
    std::string const name_;
    int const enabled_;
};

}  // namespace

DebugHandler::~DebugHandler() = default;

DebugHandler* getDebugHandler(std::string const& name)
{
    char const* const settings = std::getenv("DOVAN_DEBUG");
    return new StandardErrorHandler(name, settings == nullptr ? -1 : enabledLevel(settings, name));
}

}  // namespace Dovan::Platform
