#include "support/util.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

#include "base/descriptor.h"

namespace Quask::Util {

std::uint32_t hash(char const* bytes, unsigned length)
{
    std::uint32_t sum = 2166136261u;
    for (unsigned i = 0; i < length; ++i) {
        sum = (sum ^ static_cast<unsigned char>(bytes[i])) * 16777619u;
    }
    return sum;
}

std::string decodeMagic(unsigned long long magic)
{
    std::string text;
    for (unsigned i = 0; i < 8; ++i) {
        auto const byte = static_cast<unsigned char>(magic >> (8 * i));
        text += byte >= 0x20 && byte <= 0x7e ? static_cast<char>(byte) : '.';
    }
    return text;
}

void decodeOrvik(unsigned orvik, unsigned short& pid, unsigned short& instanceId)
{
    pid = static_cast<unsigned short>(orvik & 0xffff);
    instanceId = static_cast<unsigned short>(orvik >> 16);
}

bool isQuaskFile(Dovan::Platform::DebugHandler& /*handler*/, std::string const& fileName)
{
    return fileName == "buckets" || fileName == "slots" || fileName == "vandral.1" ||
           fileName == "vandral.2";
}

std::string readToEnd(int descriptor, std::size_t most)
{
    std::string text;
    std::array<char, 4096> piece;
    for (;;) {
        ssize_t const count =
            read(descriptor, piece.data(), std::min(piece.size(), most - text.size()));
        if (count > 0) {
            text.append(piece.data(), static_cast<std::size_t>(count));
        } else if (count == 0) {
            return text;
        } else if (errno != EINTR) {
            return {};
        }
    }
}

std::string readCmdline(Dovan::Platform::DebugHandler& /*handler*/, int pid)
{
    std::string const path = "/proc/" + std::to_string(pid) + "/cmdline";
    Dovan::Descriptor const file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) {
        return {};
    }
    std::string text = readToEnd(file.number(), longestCmdline);
    if (!text.empty() && text.back() == '\0') {
        text.pop_back();
    }
    std::replace(text.begin(), text.end(), '\0', ' ');
    return text;
}

}  // namespace Quask::Util
