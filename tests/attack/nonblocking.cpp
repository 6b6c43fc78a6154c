// nonblocking DESCRIPTOR COMMAND...: runs the command with this descriptor not blocking.

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fputs("usage: nonblocking DESCRIPTOR COMMAND...\n", stderr);
        return 2;
    }
    int const descriptor = std::atoi(argv[1]);
    if (fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK) == 0) {
        execvp(argv[2], argv + 2);
    }
    std::perror(argv[2]);
    return 127;
}
