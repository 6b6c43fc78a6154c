#include "base/write_all.h"

#include <cerrno>
#include <cstddef>

#include <poll.h>
#include <unistd.h>

namespace Dovan {
namespace {

void waitUntilWritable(int descriptor)
{
    pollfd waited{descriptor, POLLOUT, 0};
    if (poll(&waited, 1, -1) < 0 && errno != EINTR) {
        // A process that is allowed no descriptors at all may not wait for one either: it tries
        // again after a millisecond.
        poll(nullptr, 0, 1);
    }
}

}  // namespace

bool writeAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        ssize_t const written = write(descriptor, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            waitUntilWritable(descriptor);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace Dovan
