// without_openat2 ERRNO COMMAND...
//
// Runs the command where openat2() fails with this error number, as on kernels that do not have it
// (ENOSYS, 38) and in containers whose filter does not know it (EPERM, 1).

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fputs("usage: without_openat2 ERRNO COMMAND...\n", stderr);
        return 2;
    }
    auto const error = static_cast<unsigned>(std::atoi(argv[1]));
    std::array<sock_filter, 4> filter{{
        {BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
        {BPF_JMP | BPF_JEQ | BPF_K, 0, 1, SYS_openat2},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | error},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
    }};
    sock_fprog const program{filter.size(), filter.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0) {
        execvp(argv[2], argv + 2);
    }
    std::perror(argv[2]);
    return 127;
}
