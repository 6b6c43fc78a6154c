// What tests in namespaces of their own can rely on.

#include "support/own_namespaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include <linux/capability.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/child_process.h"
#include "support/other_user.h"
#include "support/private_root.h"
#include "support/small_file_system.h"

namespace {

using QuaskTesting::ChildProcess;
using QuaskTesting::Command;
using QuaskTesting::OtherUser;

class OwnNamespaces : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!QuaskTesting::inOwnNamespaces()) {
            GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
        }
    }

    static std::set<std::string> processes()
    {
        std::set<std::string> ids;
        for (auto const& entry : std::filesystem::directory_iterator("/proc")) {
            std::string const name = entry.path().filename();
            if (std::ranges::all_of(name, [](char c) { return c >= '0' && c <= '9'; })) {
                ids.insert(name);
            }
        }
        return ids;
    }

    QuaskTesting::PrivateRoot root;
};

TEST_F(OwnNamespaces, HoldNoProcessesButTheTestsOwn)
{
    ChildProcess const child({.words = {"cat"}});
    EXPECT_EQ(processes(),
              (std::set<std::string>{"1", std::to_string(getpid()), std::to_string(child.pid())}));
}

TEST_F(OwnNamespaces, LetAFileSystemFillUp)
{
    auto const write = [this](std::size_t bytes) {
        std::ofstream file(root.path() + "/small/file", std::ios::trunc);
        return static_cast<bool>(file << std::string(bytes, '~') << std::flush);
    };
    root.makeDirectory("small");
    {
        QuaskTesting::SmallFileSystem const small(root.path() + "/small", 65536);
        EXPECT_TRUE(write(65536));
        EXPECT_FALSE(write(65537));
    }
    EXPECT_TRUE(std::filesystem::is_empty(root.path() + "/small"));
}

class Unprivileged : public testing::Test
{
protected:
    // What a file without permissions holds for who runs `command` with its path after it.
    std::string readWith(Command command) const
    {
        std::string const path = root.writeFile("file", "secret");
        EXPECT_EQ(chmod(root.path().c_str(), 0755), 0);
        EXPECT_EQ(chmod(path.c_str(), 0), 0);
        command.words.push_back(path);
        return QuaskTesting::run(command).out;
    }

    QuaskTesting::PrivateRoot root;
};

TEST_F(Unprivileged, RootItselfWithoutTheCapabilities)
{
    Command command{.words = {"cat"}};
    if (getuid() == 0) {
        EXPECT_EQ(readWith(command), "secret");
    }
    command.lacking = {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH};
    EXPECT_EQ(readWith(command), "");
}

TEST_F(Unprivileged, AnotherUserWhoRunsACopyOfTheProgram)
{
    if (!OtherUser::exists()) {
        GTEST_SKIP() << "root may not become another user here";
    }
    OtherUser const user("/bin/cat");
    EXPECT_EQ(readWith(user.command({.words = {"cat"}})), "");
    EXPECT_EQ(QuaskTesting::run(user.command({.words = {"cat", "/proc/self/maps"}})).err, "");
}

}  // namespace
