#include "base/standard_descriptors.h"

#include <gtest/gtest.h>

#include <string>

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include "support/forked.h"
#include "support/private_root.h"

namespace {

using QuaskTesting::endOf;

// Whether a file that is opened gets none of the standard descriptors, and writing to the two for
// output fails although they are open.
bool areReserved()
{
    int const next = open("/", O_RDONLY);
    return next > STDERR_FILENO && fcntl(STDOUT_FILENO, F_GETFD) != -1 &&
           write(STDOUT_FILENO, "x", 1) == -1 && write(STDERR_FILENO, "x", 1) == -1;
}

TEST(ReserveStandardDescriptors, WritingToAClosedOneStillFails)
{
    EXPECT_EQ(endOf([] {
                  close(STDIN_FILENO);
                  close(STDOUT_FILENO);
                  close(STDERR_FILENO);
                  Dovan::reserveStandardDescriptors();
                  return areReserved() ? 7 : 1;
              }),
              7);
}

TEST(ReserveStandardDescriptors, NeedsNoDeviceFiles)
{
    QuaskTesting::PrivateRoot const root;
    constexpr int notAllowed = 77;
    int const status = endOf([&root] {
        bool const entered = chroot(root.path().c_str()) == 0 ||
                             (unshare(CLONE_NEWUSER) == 0 && chroot(root.path().c_str()) == 0);
        if (!entered || chdir("/") != 0) {
            return notAllowed;
        }
        close(STDOUT_FILENO);
        close(STDERR_FILENO);
        Dovan::reserveStandardDescriptors();
        return areReserved() ? 7 : 1;
    });
    if (status == notAllowed) {
        GTEST_SKIP() << "the root directory may not be changed here";
    }
    EXPECT_EQ(status, 7);
}

TEST(ReserveStandardDescriptors, LeavesThoseThatAreOpenAlone)
{
    EXPECT_EQ(endOf([] {
                  int const before = fcntl(STDOUT_FILENO, F_GETFL);
                  int const next = dup(STDOUT_FILENO);
                  close(next);
                  Dovan::reserveStandardDescriptors();
                  return fcntl(STDOUT_FILENO, F_GETFL) == before && dup(STDOUT_FILENO) == next ? 7
                                                                                               : 1;
              }),
              7);
}

}  // namespace
