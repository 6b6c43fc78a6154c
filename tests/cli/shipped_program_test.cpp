// The program that is shipped, on the root directory that was built into it.

#include <gtest/gtest.h>

#include <filesystem>

#include "support/child_process.h"
#include "support/own_namespaces.h"
#include "support/small_file_system.h"
#include "support/table_files.h"

namespace {

using QuaskTesting::bytesOf;
using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::TableImage;

class ShippedProgram : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!QuaskTesting::inOwnNamespaces()) {
            GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
        }
    }

    // The root directory, or the lowest that is there of those that lead to it. Nothing can be
    // mounted on the first of all.
    static std::filesystem::path present()
    {
        std::filesystem::path path = QUASK_ROOT_DIR;
        while (!std::filesystem::is_directory(path)) {
            path = path.parent_path();
        }
        return path;
    }

    // Not the environment's root directory, which is for the tests' own programs.
    static Finished quask(std::vector<std::string> arguments)
    {
        Command command{.words = std::move(arguments)};
        command.words.insert(command.words.begin(), QUASK);
        command.environment = {{"QUASK_TEST_ROOT", "/nonexistent"}, {"J5_CHROOT", "1"}};
        command.unset = {"DOVAN_DEBUG"};
        return QuaskTesting::run(command);
    }
};

TEST_F(ShippedProgram, ReadsTheTablesOfItsRootDirectory)
{
    ASSERT_NE(present(), "/") << "tables would be made on this machine";
    std::size_t const megabyte = 1024 * 1024;
    QuaskTesting::SmallFileSystem const emptyInThisTest(present(), megabyte);
    std::filesystem::create_directories(QUASK_ROOT_DIR);
    EXPECT_EQ(quask({}).err, "No table was found.\n");
    TableImage::of("int", 4).buckets(1).chain(0, {{0, bytesOf(7)}}).writeTo(QUASK_ROOT_DIR "/eq");
    EXPECT_EQ(quask({"eq"}).out,
              "bucket[0] 0-->07000000 ffffffff --> none\nLookaside hits: 0\nChain restarts: 0\n");
    EXPECT_EQ(quask({"-a"}).out,
              "Quask table \"" QUASK_ROOT_DIR
              "/eq\"\n"
              "Capacity: slots:1024 buckets:1 primary_notifications:0 secondary_notifications:0\n"
              "Occupied slots: 1\nClients: None\n\n");
}

}  // namespace
