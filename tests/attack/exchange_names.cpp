// exchange_names NAME OTHER...
//
// Exchanges NAME with each of the others in turn, at least once and as fast as it goes until its
// standard input ends: what has the name changes all the time, and it is never missing. Prints
// "ready", and how often in the end.

#include <cstdio>

#include <fcntl.h>

#include "attack/input_ended.h"

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fputs("usage: exchange_names NAME OTHER...\n", stderr);
        return 2;
    }
    std::puts("ready");
    std::fflush(stdout);
    unsigned long exchanges = 0;
    do {
        for (int i = 2; i < argc; ++i) {
            if (renameat2(AT_FDCWD, argv[i], AT_FDCWD, argv[1], RENAME_EXCHANGE) != 0) {
                std::perror("cannot exchange names");
                return 1;
            }
            ++exchanges;
        }
    } while (!QuaskAttack::inputEnded());
    std::printf("%lu\n", exchanges);
}
