#pragma once

#include <poll.h>
#include <unistd.h>

namespace QuaskAttack {

// Whether who started this program has closed its standard input. Does not wait.
inline bool inputEnded()
{
    pollfd input{STDIN_FILENO, POLLIN, 0};
    char byte = 0;
    return poll(&input, 1, 0) > 0 && read(STDIN_FILENO, &byte, 1) <= 0;
}

}  // namespace QuaskAttack
