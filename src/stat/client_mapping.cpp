#include "stat/client_mapping.h"

#include <charconv>
#include <cstddef>
#include <system_error>

#include <sys/sysmacros.h>

#include "clients/tokens.h"

namespace Quask::Stat {
namespace {

std::optional<ClientFile> clientFileCalled(std::string_view name)
{
    if (name == "slots") {
        return ClientFile::slots;
    }
    if (name == "vandral.1") {
        return ClientFile::vandral1;
    }
    if (name == "orvik") {
        return ClientFile::orvik;
    }
    return std::nullopt;
}

template <typename Number>
bool readNumber(std::string_view text, int base, Number& number)
{
    char const* const end = text.data() + text.size();
    auto const [rest, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc() && rest == end;
}

// From the columns "00:1a" and "1234".
std::optional<FileIdentity> readIdentity(std::string_view device, std::string_view inode)
{
    std::size_t const colon = device.find(':');
    unsigned major = 0;
    unsigned minor = 0;
    ino_t number = 0;
    if (colon == std::string_view::npos || !readNumber(device.substr(0, colon), 16, major) ||
        !readNumber(device.substr(colon + 1), 16, minor) || !readNumber(inode, 10, number)) {
        return std::nullopt;
    }
    return FileIdentity{makedev(major, minor), number};
}

// The kernel writes a newline in a path as \012, and every other character as it is.
std::string withNewlines(std::string_view path)
{
    constexpr std::string_view escaped = "\\012";
    std::string text;
    for (std::size_t at = 0; (at = path.find(escaped)) != std::string_view::npos;) {
        text.append(path.substr(0, at)).append(1, '\n');
        path.remove_prefix(at + escaped.size());
    }
    return text.append(path);
}

}  // namespace

std::optional<ClientMapping> readClientMapping(std::string_view line)
{
    constexpr std::string_view removed = " (deleted)";
    // No column before the path has a slash.
    std::size_t const start = line.find('/');
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view path = line.substr(start);
    bool const isRemoved = path.ends_with(removed);
    path.remove_suffix(isRemoved ? removed.size() : 0);
    std::optional const file = clientFileCalled(afterLastSlash(path));
    if (!file) {
        return std::nullopt;
    }
    std::optional const identity = readIdentity(nthToken(line, 4, " "), nthToken(line, 5, " "));
    if (!identity) {
        return std::nullopt;
    }
    std::string_view const permissions = nthToken(line, 2, " ");
    return ClientMapping{.identity = *identity,
                         .file = *file,
                         .canRead = permissions.starts_with("r-"),
                         .canWrite = permissions.starts_with("rw"),
                         .isRemoved = isRemoved,
                         .directory = withNewlines(path.substr(0, path.rfind('/')))};
}

}  // namespace Quask::Stat
