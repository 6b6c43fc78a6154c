#include "support/open_without_links.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "support/private_root.h"
#include "support/root_path.h"

namespace {

using std::filesystem::create_symlink;

class OpenWithoutLinks : public testing::Test
{
protected:
    OpenWithoutLinks() { root.writeFile("feed/eq/slots", "contents"); }

    // 0 when the file below the root directory can be opened, else the errno.
    int resultOf(std::string const& relative) const
    {
        return Mem::openWithoutLinks(Quask::rootDirectory() + "/" + relative, O_RDONLY).isOpen()
                   ? 0
                   : errno;
    }

    QuaskTesting::PrivateRoot root;
};

// From now on the kernel does not offer openat2() to this process, or a sandbox forbids it.
void takeOpenat2Away(int error)
{
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat2, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog const program{static_cast<unsigned short>(std::size(filter)), filter};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
        _exit(3);
    }
}

TEST_F(OpenWithoutLinks, OpensWhatIsThere)
{
    EXPECT_EQ(resultOf("feed/eq/slots"), 0);
    EXPECT_EQ(resultOf("feed//eq/./slots"), 0);
    EXPECT_EQ(resultOf("feed/eq/buckets"), ENOENT);
}

TEST_F(OpenWithoutLinks, FollowsNoLinkByTheFilesName)
{
    create_symlink("slots", root.path() + "/feed/eq/buckets");
    EXPECT_EQ(resultOf("feed/eq/buckets"), ELOOP);
}

TEST_F(OpenWithoutLinks, FollowsNoLinkInPlaceOfADirectoryBelowTheRoot)
{
    create_symlink("feed", root.path() + "/link");
    create_symlink("eq", root.path() + "/feed/fx");
    EXPECT_EQ(resultOf("link/eq/slots"), ELOOP);
    EXPECT_EQ(resultOf("feed/fx/slots"), ELOOP);
}

TEST_F(OpenWithoutLinks, DoesNotLeaveTheRootDirectoryUpwards)
{
    root.writeFile("slots", "");
    root.setRootDirectory("feed");
    EXPECT_EQ(resultOf("eq/slots"), 0);
    EXPECT_EQ(resultOf("../slots"), ELOOP);
    EXPECT_EQ(resultOf("eq/../eq/slots"), ELOOP);
}

TEST_F(OpenWithoutLinks, TheRootDirectoryItselfMayBeALink)
{
    create_symlink("feed", root.path() + "/link");
    root.setRootDirectory("link");
    EXPECT_EQ(resultOf("eq/slots"), 0);
    root.setRootDirectory("link/eq");
    EXPECT_EQ(resultOf("slots"), 0);
}

TEST_F(OpenWithoutLinks, AMissingRootDirectoryIsReported)
{
    root.setRootDirectory("missing");
    EXPECT_EQ(resultOf("eq/slots"), ENOENT);
}

TEST_F(OpenWithoutLinks, TheDescriptorIsClosedOnExec)
{
    Dovan::Descriptor const opened =
        Mem::openWithoutLinks(root.path() + "/feed/eq/slots", O_RDONLY);
    EXPECT_EQ(fcntl(opened.number(), F_GETFD), FD_CLOEXEC);
}

// Without openat2() the same holds, one directory after another.
using OpenWithoutLinksDeathTest = OpenWithoutLinks;

TEST_F(OpenWithoutLinksDeathTest, OlderKernelsAndSandboxesDoTheSame)
{
    create_symlink("slots", root.path() + "/feed/eq/buckets");
    create_symlink("feed", root.path() + "/link");
    for (int const error : {ENOSYS, EPERM}) {
        EXPECT_EXIT(
            {
                takeOpenat2Away(error);
                bool const opens =
                    resultOf("feed/eq/slots") == 0 && resultOf("feed//eq/slots") == 0;
                bool const refuses = resultOf("feed/eq/buckets") == ELOOP &&
                                     resultOf("link/eq/slots") == ENOTDIR &&
                                     resultOf("feed/eq/../eq/slots") == ELOOP;
                bool const misses = resultOf("feed/eq/vandral.1") == ENOENT;
                root.setRootDirectory("link");
                bool const opensBelowLink = resultOf("eq/slots") == 0;
                _exit(opens && refuses && misses && opensBelowLink ? 0 : 1);
            },
            testing::ExitedWithCode(0), "");
    }
}

}  // namespace
