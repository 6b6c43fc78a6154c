#include "soak/checked_scan.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace QuaskTesting {
namespace {

constexpr int pipeSize = 1 << 20;

// Gives the lines that come out of `descriptor` to the checker until it ends.
void takeLines(int descriptor, ScanChecker& checker)
{
    static std::vector<char> buffer(4 * pipeSize);
    std::size_t held = 0;
    for (;;) {
        if (held == buffer.size()) {
            buffer.resize(2 * buffer.size());
        }
        ssize_t const count = read(descriptor, buffer.data() + held, buffer.size() - held);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        std::string_view const text(buffer.data(), held + static_cast<std::size_t>(count));
        std::size_t const whole = text.rfind('\n') + 1;  // 0 without a newline
        if (whole > 0) {
            checker.take(text.substr(0, whole));
        }
        held = text.size() - whole;
        std::memmove(buffer.data(), text.data() + whole, held);
    }
    if (held > 0) {
        checker.take({buffer.data(), held});
    }
}

}  // namespace

std::string checkedScan(Command command, ScanChecker& checker)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    fcntl(ends[1], F_SETPIPE_SZ, pipeSize);
    command.outDescriptor = ends[1];
    ChildProcess scan(command);
    close(ends[1]);
    checker.begin();
    takeLines(ends[0], checker);
    close(ends[0]);
    Finished const finished = scan.finish();
    if (finished.exitStatus == 0 && finished.err.empty()) {
        checker.end();
        return {};
    }
    return "status " + std::to_string(finished.exitStatus) + ", signal " +
           std::to_string(finished.signal) + ", " + finished.err;
}

}  // namespace QuaskTesting
