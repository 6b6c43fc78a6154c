#include "support/root_path.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/private_root.h"
#include "support/recording_handler.h"

namespace {

using Quask::RootPath;

class RootPathTest : public testing::Test
{
protected:
    QuaskTesting::PrivateRoot root;
    QuaskTesting::RecordingHandler handler;
};

TEST_F(RootPathTest, TheEmptyNameGivesTheRootDirectory)
{
    EXPECT_EQ(RootPath(handler, "", false).directory(), root.path());
}

TEST_F(RootPathTest, ANameIsAppendedAsItIs)
{
    EXPECT_EQ(RootPath(handler, "feed/eq", false).directory(), root.path() + "/feed/eq");
    EXPECT_EQ(RootPath(handler, "a//./b", false).directory(), root.path() + "/a//./b");
    EXPECT_EQ(RootPath(handler, "feed/eq", false).table(), "feed/eq");
}

TEST_F(RootPathTest, OnlyAWriterMakesTheDirectoryAndItsParents)
{
    RootPath const read(handler, "feed/eq", false);
    EXPECT_FALSE(std::filesystem::exists(root.path() + "/feed"));
    RootPath const written(handler, "feed/eq", true);
    EXPECT_TRUE(std::filesystem::is_directory(root.path() + "/feed/eq"));
}

}  // namespace
