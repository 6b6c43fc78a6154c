#pragma once

#include <compare>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace Quask::Model {

// A text that never changes and that all copies share, so that a copy takes no memory for it.
// Ordered byte by byte, a prefix first. One thread at a time for a text and its copies together.
class SharedText
{
public:
    // The empty text.
    SharedText() = default;

    // Implicit, since either is a text.
    // NOLINTNEXTLINE(google-explicit-constructor)
    SharedText(std::string text) : text_(std::make_shared<std::string const>(std::move(text))) {}
    // NOLINTNEXTLINE(google-explicit-constructor)
    SharedText(char const* text) : SharedText(std::string(text)) {}

    // Valid as long as any of the copies.
    std::string_view text() const
    {
        return text_ == nullptr ? std::string_view() : std::string_view(*text_);
    }

    friend bool operator==(SharedText const& left, SharedText const& right)
    {
        return left.text_ == right.text_ || left.text() == right.text();
    }

    friend std::strong_ordering operator<=>(SharedText const& left, SharedText const& right)
    {
        return left.text_ == right.text_ ? std::strong_ordering::equal
                                         : left.text() <=> right.text();
    }

private:
    std::shared_ptr<std::string const> text_;
};

}  // namespace Quask::Model
