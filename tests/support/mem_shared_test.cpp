#include "support/mem_shared.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/private_root.h"

namespace {

using Mem::Mode;
using Mem::Shared;

class MemShared : public testing::Test
{
protected:
    Shared segmentOn(char const* name) { return {root.path().c_str(), name, false, 0, false}; }

    QuaskTesting::PrivateRoot root;
};

TEST_F(MemShared, MapsTheFilesBytes)
{
    root.writeFile("slots", "contents");
    Shared segment = segmentOn("slots");
    EXPECT_EQ(segment.memSize(), 8u);
    auto const* const text = static_cast<char const*>(segment.attach(8, Mode::read));
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "contents");
    EXPECT_EQ(segment.readableSize(), Mem::pageSize_);
}

TEST_F(MemShared, AMissingFileHasNoSizeAndIsNotMapped)
{
    Shared segment = segmentOn("slots");
    EXPECT_EQ(segment.memSize(), 0u);
    EXPECT_EQ(segment.attach(1, Mode::read), nullptr);
}

TEST_F(MemShared, APipeALinkAndADirectoryAreNotFiles)
{
    ASSERT_EQ(mkfifo((root.path() + "/pipe").c_str(), 0600), 0);
    root.writeFile("slots", "contents");
    ASSERT_EQ(symlink("slots", (root.path() + "/link").c_str()), 0);
    ASSERT_EQ(symlink("/dev/zero", (root.path() + "/device").c_str()), 0);
    root.makeDirectory("directory");
    for (char const* const name : {"pipe", "link", "device", "directory"}) {
        Shared segment = segmentOn(name);
        EXPECT_EQ(segment.memSize(), 0u) << name;
        EXPECT_EQ(segment.attach(4096, Mode::read), nullptr) << name;
    }
}

TEST_F(MemShared, AWholePageOfAShorterFileIsMapped)
{
    root.writeFile("vandral.1", "x");
    Shared segment = segmentOn("vandral.1");
    auto const* const bytes =
        static_cast<char const*>(segment.attach(static_cast<unsigned>(Mem::pageSize_), Mode::read));
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes[1], 0);
    EXPECT_EQ(bytes[Mem::pageSize_ - 1], 0);
}

TEST_F(MemShared, PagesBeyondTheFileAreNotMapped)
{
    root.writeFile("slots", "x");
    Shared segment = segmentOn("slots");
    EXPECT_EQ(segment.attach(static_cast<unsigned>(Mem::pageSize_) + 1, Mode::read), nullptr);
}

TEST_F(MemShared, IsNeverAttachedForWriting)
{
    root.writeFile("slots", "x");
    Shared segment = segmentOn("slots");
    EXPECT_EQ(segment.attach(1, Mode::write), nullptr);
}

TEST_F(MemShared, TellsTheSizeOfTheMappedFileAlsoWhenItsNameIsGivenAway)
{
    std::string const path = root.writeFile("slots", "first");
    Shared segment = segmentOn("slots");
    ASSERT_NE(segment.attach(5, Mode::read), nullptr);
    std::filesystem::rename(path, path + ".old");
    root.writeFile("slots", "the second file");
    EXPECT_EQ(segment.memSize(), 5u);
    std::filesystem::resize_file(path + ".old", 70);
    EXPECT_EQ(segment.memSize(), 70u);
    segment.detach();
    EXPECT_EQ(segment.memSize(), 15u);
}

TEST_F(MemShared, IsCurrentAsLongAsItsNameLeadsToTheMappedFile)
{
    std::string const path = root.writeFile("slots", "first");
    Shared segment = segmentOn("slots");
    EXPECT_TRUE(segment.isCurrent());
    ASSERT_NE(segment.attach(5, Mode::read), nullptr);
    EXPECT_TRUE(segment.isCurrent());
    std::filesystem::rename(path, path + ".old");
    EXPECT_FALSE(segment.isCurrent());
    root.writeFile("slots", "first");
    EXPECT_FALSE(segment.isCurrent());
    std::filesystem::rename(path + ".old", path);
    EXPECT_TRUE(segment.isCurrent());
    std::filesystem::remove(path);
    EXPECT_FALSE(segment.isCurrent());
    segment.detach();
    EXPECT_TRUE(segment.isCurrent());
}

TEST_F(MemShared, GrowsWithTheFile)
{
    std::string const path = root.writeFile("slots", "head");
    Shared segment = segmentOn("slots");
    ASSERT_NE(segment.attach(4, Mode::read), nullptr);
    std::filesystem::resize_file(path, 1 << 20);
    auto const* const bytes = static_cast<char const*>(segment.resize(1 << 20));
    ASSERT_NE(bytes, nullptr);
    EXPECT_STREQ(bytes, "head");
    EXPECT_EQ(bytes[(1 << 20) - 1], 0);
    EXPECT_EQ(segment.readableSize(), std::size_t(1) << 20);
}

TEST_F(MemShared, AFileOfFourGibibytesCountsAsTheLargestNumber)
{
    std::string const path = root.writeFile("slots", "x");
    std::filesystem::resize_file(path, 4294967295u);
    EXPECT_EQ(segmentOn("slots").memSize(), 4294967295u);
    std::filesystem::resize_file(path, 4294967296u);
    EXPECT_EQ(segmentOn("slots").memSize(), 4294967295u);
    std::filesystem::resize_file(path, 5000000000u);
    EXPECT_EQ(segmentOn("slots").memSize(), 4294967295u);
}

TEST_F(MemShared, DetachedThroughItsBaseItClosesItsFile)
{
    root.writeFile("slots", "x");
    int const next = dup(STDERR_FILENO);
    close(next);
    Shared segment = segmentOn("slots");
    ASSERT_NE(segment.attach(1, Mode::read), nullptr);
    EXPECT_NE(fcntl(next, F_GETFD), -1);
    EXPECT_EQ(static_cast<Mem::Local&>(segment).detach(), 0);
    EXPECT_EQ(fcntl(next, F_GETFD), -1);
    EXPECT_NE(segment.attach(1, Mode::read), nullptr);
}

TEST_F(MemShared, ItsDescriptorIsClosedWhenTheFileCannotBeMapped)
{
    root.writeFile("slots", "x");
    int const next = dup(STDERR_FILENO);
    close(next);
    Shared segment = segmentOn("slots");
    EXPECT_EQ(segment.attach(0, Mode::read), nullptr);
    EXPECT_EQ(segment.attach(100000, Mode::read), nullptr);
    EXPECT_EQ(fcntl(next, F_GETFD), -1);
}

TEST_F(MemShared, ItsDescriptorIsClosedOnExecAndWhenItIsDestroyed)
{
    root.writeFile("slots", "x");
    int const next = dup(STDERR_FILENO);
    close(next);
    {
        Shared segment = segmentOn("slots");
        ASSERT_NE(segment.attach(1, Mode::read), nullptr);
        EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
    }
    EXPECT_EQ(fcntl(next, F_GETFD), -1);
}

}  // namespace
