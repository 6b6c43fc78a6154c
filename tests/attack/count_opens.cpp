// count_opens FILE...
//
// Prints "ready", then counts how often each file is opened, by whomever, until its standard input
// ends; then prints one line per file, the count and the name. Files of every kind, but no links.

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <map>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

// Adds what has been noticed since the last call. One that opens and closes at once leaves two
// events: without the second, two openings in a row would be reported as one.
void count(int notifications, std::map<int, unsigned long>& opens)
{
    alignas(inotify_event) std::array<char, 65536> events;
    ssize_t const size = read(notifications, events.data(), events.size());
    for (ssize_t at = 0; at < size;) {
        inotify_event event;
        std::memcpy(&event, events.data() + at, sizeof event);
        if ((event.mask & IN_Q_OVERFLOW) != 0) {
            std::fputs("count_opens: events were lost\n", stderr);
        }
        opens[event.wd] += (event.mask & IN_OPEN) != 0 ? 1 : 0;
        at += static_cast<ssize_t>(sizeof event + event.len);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    int const notifications = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    std::map<int, unsigned long> opens;
    std::map<int, char const*> names;
    for (int i = 1; i < argc; ++i) {
        int const watch = inotify_add_watch(notifications, argv[i], IN_OPEN | IN_CLOSE);
        if (watch < 0) {
            std::perror(argv[i]);
            return 1;
        }
        names[watch] = argv[i];
    }
    std::puts("ready");
    std::fflush(stdout);
    std::array waited{pollfd{STDIN_FILENO, POLLIN, 0}, pollfd{notifications, POLLIN, 0}};
    while (waited[0].revents == 0) {
        poll(waited.data(), waited.size(), -1);
        count(notifications, opens);
    }
    for (auto const& [watch, name] : names) {
        std::printf("%lu %s\n", opens[watch], name);
    }
}
