// Which maps files are found, in the kernel's directory and in made-up ones.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <exception>

#include <sys/resource.h>
#include <unistd.h>

#include "base/exception.h"
#include "clients/recording_scanner.h"
#include "support/private_root.h"

namespace {

using Quask::DirNode;
using QuaskTesting::RecordingScanner;
using Lines = std::vector<std::string>;

class ProcessDirectoryTest : public testing::Test
{
protected:
    // The maps paths below `directory`, sorted, relative to it.
    Lines mapsPathsBelow(std::string const& directory)
    {
        DirNode proc(scanner.recorder(), directory, nullptr);
        Lines paths;
        for (std::string path; scanner.readNextMmap(proc, path);) {
            EXPECT_TRUE(path.starts_with(directory + "/"));
            paths.push_back(path.substr(directory.size() + 1));
        }
        std::ranges::sort(paths);
        return paths;
    }

    QuaskTesting::PrivateRoot root;
    RecordingScanner scanner{-1};
};

std::string const table = "/dev/shm/quask/feed";

TEST_F(ProcessDirectoryTest, EveryEntryWithAMapsFileBelowItCounts)
{
    root.writeFile("proc/4711/maps", "");
    root.writeFile("proc/self/maps", "");
    root.writeFile("proc/4712/status", "");
    root.writeFile("proc/uptime", "");
    root.writeFile("proc/maps", "");
    root.makeDirectory("proc/4713/maps");
    EXPECT_EQ(mapsPathsBelow(root.path() + "/proc"),
              (Lines{"./maps", "4711/maps", "4713/maps", "self/maps"}))
        << "4713's cannot be read, but it is there";
}

TEST_F(ProcessDirectoryTest, AnEmptyDirectoryHasNone)
{
    EXPECT_EQ(mapsPathsBelow(root.makeDirectory("proc")), Lines{});
}

TEST_F(ProcessDirectoryTest, ADirectoryThatIsNotThereHasNone)
{
    EXPECT_EQ(mapsPathsBelow(root.path() + "/proc"), Lines{});
}

TEST_F(ProcessDirectoryTest, TheKernelsHasThisProcessAndItsOwnNamesForIt)
{
    Lines const paths = mapsPathsBelow("/proc");
    EXPECT_TRUE(std::ranges::binary_search(paths, std::to_string(getpid()) + "/maps"));
    EXPECT_TRUE(std::ranges::binary_search(paths, "self/maps"));
    EXPECT_FALSE(std::ranges::binary_search(paths, "./maps"));
    EXPECT_FALSE(std::ranges::binary_search(paths, "../maps"));
}

TEST_F(ProcessDirectoryTest, ATableThatNoProcessMapsHasNoRecords)
{
    EXPECT_EQ(scanner.extractMmapInfo(root.path() + "/feed"), Lines{});
    EXPECT_FALSE(scanner.extractMmapInfoByTable(root.path()).contains(root.path() + "/feed"));
}

TEST_F(ProcessDirectoryTest, TheTraversalIsTraced)
{
    RecordingScanner routine(5);
    routine.extractMmapInfo(table);
    EXPECT_EQ(routine.takeLog().at(0),
              "5 Extracting mmap info for rootpath: " + table + " traversing /proc");
    routine.extractMmapInfoByTable("/dev/shm/quask");
    EXPECT_EQ(routine.takeLog().at(0),
              "5 Extracting mmap info by table for rootpath: /dev/shm/quask traversing /proc");
}

// Takes this process's descriptors away while it lives.
class NoDescriptors
{
public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit const none{0, before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    NoDescriptors(NoDescriptors const&) = delete;
    NoDescriptors& operator=(NoDescriptors const&) = delete;
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

private:
    rlimit before_{};
};

TEST_F(ProcessDirectoryTest, ThrowsInTheLoggedWordsWhenTheDirectoryCannotBeOpened)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "UndefinedBehaviorSanitizer needs descriptors to look at an object's type";
#endif
    RecordingScanner errors(0);
    auto const expectThrow = [&](auto const& extract) {
        std::exception_ptr thrown;
        try {
            NoDescriptors const none;
            extract();
            ADD_FAILURE() << "nothing was thrown";
        } catch (...) {
            thrown = std::current_exception();
        }
        EXPECT_THAT([&] { std::rethrow_exception(thrown); },
                    testing::ThrowsMessage<Dovan::RuntimeException>("Couldn't open /proc"));
        EXPECT_EQ(errors.takeLog(), Lines{"0 Couldn't open /proc"});
    };
    expectThrow([&] { errors.extractMmapInfo(table); });
    expectThrow([&] { errors.extractMmapInfoByTable("/dev/shm/quask"); });
}

}  // namespace
