#include "support/watched_mapping.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <iostream>
#include <list>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "base/standard_output.h"
#include "support/mem_shared.h"
#include "support/private_root.h"

namespace {

using Mem::Mode;
using Mem::Shared;

int readByte(void const* address)
{
    return *static_cast<char const volatile*>(address);
}

class WatchedMappingDeathTest : public testing::Test
{
protected:
    QuaskTesting::PrivateRoot root;
};

TEST_F(WatchedMappingDeathTest, AFileCutShortEndsTheRunWithOneLineThatNamesIt)
{
    std::string const path = root.writeFile("feed/eq/slots", std::string(20000, 'x'));
    Shared segment((root.path() + "/feed/eq").c_str(), "slots", false, 0, false);
    auto const* const bytes = static_cast<char const*>(segment.attach(20000, Mode::read));
    ASSERT_NE(bytes, nullptr);
    std::filesystem::resize_file(path, 100);
    EXPECT_EXIT(readByte(bytes + 16384), testing::ExitedWithCode(1),
                "^Quask table file " + path + " was cut short while it was being read\n$");
}

TEST_F(WatchedMappingDeathTest, TheRestOfTheLastPageIsWatchedToo)
{
    std::string const path = root.writeFile("slots", std::string(20000, 'x'));
    Shared segment(root.path().c_str(), "slots", false, 0, false);
    auto const* const bytes = static_cast<char const*>(segment.attach(20000, Mode::read));
    ASSERT_NE(bytes, nullptr);
    std::filesystem::resize_file(path, 100);
    EXPECT_EXIT(readByte(bytes + 20479), testing::ExitedWithCode(1), "was cut short");
}

TEST_F(WatchedMappingDeathTest, WhatIsDetachedIsNotWatchedAnyMore)
{
    std::string const path = root.writeFile("slots", std::string(4096, 'x'));
    Shared segment(root.path().c_str(), "slots", false, 0, false);
    void* const place = segment.attach(4096, Mode::read);
    ASSERT_NE(place, nullptr);
    segment.detach();
    int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(mmap(place, 4096, PROT_READ, MAP_SHARED | MAP_FIXED_NOREPLACE, file, 0), place);
    close(file);
    std::filesystem::resize_file(path, 0);
    EXPECT_EXIT(readByte(place), testing::KilledBySignal(SIGBUS), "");
    munmap(place, 4096);
}

TEST_F(WatchedMappingDeathTest, WhatWasPrintedBeforeIsOnTheOutput)
{
    std::string const path = root.writeFile("slots", std::string(20000, 'x'));
    Shared segment(root.path().c_str(), "slots", false, 0, false);
    auto const* const bytes = static_cast<char const*>(segment.attach(20000, Mode::read));
    ASSERT_NE(bytes, nullptr);
    std::filesystem::resize_file(path, 0);
    EXPECT_EXIT(
        {
            // Standard error in its place: that is what a death test sees.
            Dovan::StandardOutput output(STDERR_FILENO);
            std::cout << "bucket[0] ffffffff --> none\n";
            readByte(bytes);
        },
        testing::ExitedWithCode(1), "^bucket\\[0\\] ffffffff --> none\nQuask table file ");
}

TEST_F(WatchedMappingDeathTest, AResizedSegmentIsStillWatched)
{
    std::string const path = root.writeFile("slots", std::string(100, 'x'));
    Shared segment(root.path().c_str(), "slots", false, 0, false);
    ASSERT_NE(segment.attach(100, Mode::read), nullptr);
    std::filesystem::resize_file(path, 1 << 20);
    auto const* const bytes = static_cast<char const*>(segment.resize(1 << 20));
    ASSERT_NE(bytes, nullptr);
    std::filesystem::resize_file(path, 100);
    EXPECT_EXIT(readByte(bytes + (1 << 20) - 1), testing::ExitedWithCode(1), "was cut short");
}

TEST_F(WatchedMappingDeathTest, AnyNumberOfFilesIsWatched)
{
    std::string const path = root.writeFile("slots", std::string(20000, 'x'));
    std::list<Shared> segments;
    std::vector<char const*> starts;
    for (int i = 0; i < 40; ++i) {
        segments.emplace_back(root.path().c_str(), "slots", false, 0, false);
        starts.push_back(static_cast<char const*>(segments.back().attach(20000, Mode::read)));
        ASSERT_NE(starts.back(), nullptr);
    }
    std::filesystem::resize_file(path, 100);
    for (int const i : {0, 17, 39}) {
        EXPECT_EXIT(readByte(starts[static_cast<std::size_t>(i)] + 4096),
                    testing::ExitedWithCode(1), "was cut short");
    }
}

// More often than any list of a fixed length would allow.
TEST_F(WatchedMappingDeathTest, AFileIsWatchedAfterManyOthersWereDetachedAndManyGrowthSteps)
{
    for (int i = 0; i < 100; ++i) {
        std::string const name = "file" + std::to_string(i);
        root.writeFile(name, "x");
        Shared segment(root.path().c_str(), name.c_str(), false, 0, false);
        ASSERT_NE(segment.attach(1, Mode::read), nullptr);
        if (i % 2 == 0) {
            static_cast<Mem::Local&>(segment).detach();
        }
    }
    std::string const path = root.writeFile("slots", "x");
    Shared segment(root.path().c_str(), "slots", false, 0, false);
    ASSERT_NE(segment.attach(1, Mode::read), nullptr);
    char const* bytes = nullptr;
    for (unsigned size = 1; size < 100; ++size) {
        std::filesystem::resize_file(path, size * 4096);
        bytes = static_cast<char const*>(segment.resize(size * 4096));
        ASSERT_NE(bytes, nullptr);
    }
    std::filesystem::resize_file(path, 1);
    EXPECT_EXIT(readByte(bytes + 50 * 4096), testing::ExitedWithCode(1),
                "^Quask table file " + path + " was cut short while it was being read\n$");
}

TEST_F(WatchedMappingDeathTest, APageThatCannotBeReadMayBeTakenForZeros)
{
    std::string const path = root.writeFile("slots", std::string(20000, 'x'));
    Shared cut(root.path().c_str(), "slots", false, 0, false);
    auto const* const bytes = static_cast<char const*>(cut.attach(20000, Mode::read));
    root.writeFile("buckets", "x");
    Shared whole(root.path().c_str(), "buckets", false, 0, false);
    ASSERT_NE(whole.attach(1, Mode::read), nullptr);
    std::filesystem::resize_file(path, 100);
    {
        Mem::UnreadableAsZeros const unreadableAsZeros;
        EXPECT_EQ(readByte(bytes), 'x');
        EXPECT_FALSE(cut.hasUnreadablePage());
        EXPECT_EQ(readByte(bytes + 8000), 0);
        EXPECT_TRUE(cut.hasUnreadablePage());
        EXPECT_FALSE(whole.hasUnreadablePage());
    }
    EXPECT_EXIT(readByte(bytes + 16384), testing::ExitedWithCode(1), "was cut short");
    cut.detach();
    std::filesystem::resize_file(path, 20000);
    ASSERT_NE(cut.attach(20000, Mode::read), nullptr);
    EXPECT_FALSE(cut.hasUnreadablePage());
}

TEST_F(WatchedMappingDeathTest, APageThatWasTakenForZerosForNowIsUnreadableAgain)
{
    std::string const path = root.writeFile("slots", std::string(20000, 'x'));
    Shared cut(root.path().c_str(), "slots", false, 0, false);
    auto const* const bytes = static_cast<char const*>(cut.attach(20000, Mode::read));
    ASSERT_NE(bytes, nullptr);
    std::filesystem::resize_file(path, 100);
    for (int i = 0; i < 2; ++i) {
        Mem::ZerosForNow const zerosForNow;
        EXPECT_EQ(readByte(bytes), 'x');
        EXPECT_FALSE(zerosForNow.hasReplaced());
        EXPECT_EQ(readByte(bytes + 8192), 0);
        EXPECT_EQ(readByte(bytes + 16384), 0);
        EXPECT_TRUE(zerosForNow.hasReplaced());
    }
    EXPECT_FALSE(cut.hasUnreadablePage());
    EXPECT_EXIT(readByte(bytes + 8192), testing::ExitedWithCode(1), "was cut short");
    std::filesystem::resize_file(path, 20000);
    EXPECT_EQ(readByte(bytes + 8192), 0);
    EXPECT_EQ(readByte(bytes), 'x');
    // In one piece, which is what growing needs.
    EXPECT_NE(cut.resize(20480), nullptr);
}

TEST_F(WatchedMappingDeathTest, AnyOtherBusErrorEndsTheProcess)
{
    root.writeFile("slots", "x");
    Shared segment(root.path().c_str(), "slots", false, 0, false);
    ASSERT_NE(segment.attach(1, Mode::read), nullptr);
    EXPECT_EXIT(raise(SIGBUS), testing::KilledBySignal(SIGBUS), "");
}

}  // namespace
