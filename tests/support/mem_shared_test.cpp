#include "support/mem_shared.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

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

TEST_F(MemShared, GivesTheSizeOfTheMappedFileEvenWhenAnotherHasItsName)
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

// A file of eight pages that has data in the third, the fourth and the seventh only.
class HolesOfASegment : public MemShared
{
protected:
    HolesOfASegment()
    {
        std::filesystem::resize_file(path, 8 * page);
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(2 * page)) << std::string(2 * page, 'x');
        file.seekp(static_cast<std::streamoff>(6 * page)) << std::string(page, 'x');
    }

    // The ranges of data between two offsets.
    static std::vector<std::pair<std::size_t, std::size_t>> dataOf(Mem::Local const& segment,
                                                                   std::size_t begin,
                                                                   std::size_t end)
    {
        std::vector<std::pair<std::size_t, std::size_t>> found;
        while (begin < end) {
            Mem::ByteRange const data = segment.nextData({begin, end});
            if (data.begin < data.end) {
                found.emplace_back(data.begin, data.end);
            }
            begin = data.end;
        }
        return found;
    }

    std::size_t const page = Mem::pageSize_;
    std::string const path = root.writeFile("slots", "");
    using Ranges = std::vector<std::pair<std::size_t, std::size_t>>;
};

TEST_F(HolesOfASegment, AreNotData)
{
    Shared segment = segmentOn("slots");
    ASSERT_NE(segment.attach(static_cast<unsigned>(8 * page), Mode::read), nullptr);
    EXPECT_EQ(dataOf(segment, 0, 8 * page), (Ranges{{2 * page, 4 * page}, {6 * page, 7 * page}}));
    EXPECT_EQ(dataOf(segment, 100, 2 * page + 100), (Ranges{{2 * page, 2 * page + 100}}));
    EXPECT_EQ(dataOf(segment, 3 * page + 100, 6 * page), (Ranges{{3 * page + 100, 4 * page}}));
    EXPECT_EQ(dataOf(segment, 4 * page, 6 * page), Ranges());
}

TEST_F(HolesOfASegment, EndWithTheLastPageOfTheFile)
{
    Shared segment = segmentOn("slots");
    ASSERT_NE(segment.attach(static_cast<unsigned>(8 * page), Mode::read), nullptr);
    std::filesystem::resize_file(path, 4 * page + 100);
    EXPECT_EQ(dataOf(segment, 4 * page, 8 * page), (Ranges{{5 * page, 8 * page}}));
    EXPECT_EQ(dataOf(segment, 6 * page, 8 * page), (Ranges{{6 * page, 8 * page}}));
}

TEST_F(HolesOfASegment, AreNotThereInAnonymousMemory)
{
    Mem::Local memory;
    ASSERT_NE(memory.attach(static_cast<unsigned>(2 * page), Mode::read), nullptr);
    EXPECT_EQ(dataOf(memory, 0, 2 * page), (Ranges{{0, 2 * page}}));
}

// Bytes of the mapping that count as this process's memory.
std::size_t residentBytes(void const* address)
{
    std::ifstream maps("/proc/self/smaps");
    std::ostringstream start;
    start << std::hex << reinterpret_cast<std::uintptr_t>(address) << '-';
    std::string line;
    while (std::getline(maps, line) && !line.starts_with(start.str())) {
    }
    while (std::getline(maps, line) && !line.starts_with("Rss:")) {
    }
    return 1024 * std::stoul(line.substr(line.find_first_of("0123456789")));
}

TEST_F(MemShared, PagesThatAreLetGoComeBack)
{
    std::size_t const page = Mem::pageSize_;
    root.writeFile("slots", std::string(64 * page, 'x'));
    Shared segment = segmentOn("slots");
    auto const* const bytes = static_cast<unsigned char const*>(
        segment.attach(static_cast<unsigned>(64 * page), Mode::read));
    ASSERT_NE(bytes, nullptr);
    auto const sum = [&] { return std::accumulate(bytes, bytes + 64 * page, std::size_t{0}); };
    EXPECT_EQ(sum(), 64 * page * 'x');
    EXPECT_EQ(residentBytes(bytes), 64 * page);
    segment.letGo({100, 63 * page + 100});
    EXPECT_EQ(residentBytes(bytes), 2 * page);
    segment.letGo({100, 200});
    EXPECT_EQ(sum(), 64 * page * 'x');
}

TEST_F(MemShared, AnonymousMemoryIsNotLetGo)
{
    Mem::Local memory;
    auto* const bytes = static_cast<unsigned char*>(
        memory.attach(static_cast<unsigned>(Mem::pageSize_), Mode::write));
    ASSERT_NE(bytes, nullptr);
    *bytes = 7;
    memory.letGo({0, Mem::pageSize_});
    EXPECT_EQ(*bytes, 7);
}

}  // namespace
