// live_writer DIRECTORY VALUE_SIZE BUCKETS STABLE HOT [GROW_TO]
//
// Makes a hot table, prints "ready" and changes it at full speed until its standard input ends;
// with GROW_TO it also adds an element now and then until that many slots are there. Prints how
// many changes it made and in how many nanoseconds.

#include <chrono>
#include <cstdint>
#include <iostream>
#include <string>

#include <poll.h>
#include <unistd.h>

#include "support/hot_writer.h"

namespace {

// Few enough that scans find a growing table at all sizes.
constexpr int changesPerGrowth = 64;

std::uint32_t number(char const* text)
{
    return static_cast<std::uint32_t>(std::stoul(text));
}

bool inputEnded()
{
    pollfd input{STDIN_FILENO, POLLIN, 0};
    char byte = 0;
    return poll(&input, 1, 0) > 0 && read(STDIN_FILENO, &byte, 1) <= 0;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 6) {
        std::cerr << "usage: live_writer DIRECTORY VALUE_SIZE BUCKETS STABLE HOT [GROW_TO]\n";
        return 2;
    }
    QuaskTesting::HotTable table;
    table.valueSize = number(argv[2]);
    table.buckets = number(argv[3]);
    table.stable = number(argv[4]);
    table.hot = number(argv[5]);
    bool const grows = argc > 6;
    table.maxSlots = grows ? number(argv[6]) : 0;
    QuaskTesting::HotWriter writer(argv[1], table);
    std::cout << "ready" << std::endl;

    auto const start = std::chrono::steady_clock::now();
    std::uint64_t changes = 0;
    while (!inputEnded()) {
        for (int i = 0; i < 10000; ++i) {
            writer.step();
            if (grows && i % changesPerGrowth == 0) {
                writer.addOne();
            }
        }
        changes += 10000;
    }
    auto const time = std::chrono::steady_clock::now() - start;
    std::cout << changes << " "
              << std::chrono::duration_cast<std::chrono::nanoseconds>(time).count() << std::endl;
}
