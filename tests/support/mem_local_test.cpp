#include "support/mem_local.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using Mem::Local;
using Mem::Mode;

TEST(RoundUpToPages, CountsWholePages)
{
    EXPECT_EQ(Mem::roundUpToPages(0), 0u);
    EXPECT_EQ(Mem::roundUpToPages(1), Mem::pageSize_);
    EXPECT_EQ(Mem::roundUpToPages(Mem::pageSize_), Mem::pageSize_);
    EXPECT_EQ(Mem::roundUpToPages(0xffffffff), std::size_t(1) << 32);
}

TEST(MemLocal, AttachesZeroedMemory)
{
    Local segment;
    auto const* const bytes = static_cast<unsigned char const*>(segment.attach(10000, Mode::read));
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes[0] | bytes[9999], 0);
    EXPECT_EQ(segment.readableSize(), Mem::roundUpToPages(10000));
}

TEST(MemLocal, ResizingKeepsTheContents)
{
    Local segment;
    void* const address = segment.attach(100, Mode::write);
    ASSERT_NE(address, nullptr);
    std::memcpy(address, "kept", 5);
    void* const larger = segment.resize(1 << 22);
    ASSERT_NE(larger, nullptr);
    EXPECT_STREQ(static_cast<char const*>(larger), "kept");
    EXPECT_EQ(static_cast<char const*>(larger)[(1 << 22) - 1], 0);
}

TEST(MemLocal, RefusesWhatCannotBeMapped)
{
    Local segment;
    EXPECT_EQ(segment.attach(0, Mode::read), nullptr);
    EXPECT_EQ(segment.resize(4096), nullptr);
    ASSERT_NE(segment.attach(1, Mode::read), nullptr);
    EXPECT_EQ(segment.attach(1, Mode::read), nullptr);
    EXPECT_EQ(segment.resize(0), nullptr);
    EXPECT_EQ(segment.readableSize(), Mem::pageSize_);
}

TEST(MemLocal, MayBeAttachedAgainOnceDetached)
{
    Local segment;
    EXPECT_EQ(segment.detach(), 0);
    ASSERT_NE(segment.attach(1, Mode::read), nullptr);
    EXPECT_EQ(segment.detach(), 0);
    EXPECT_EQ(segment.readableSize(), 0u);
    EXPECT_NE(segment.attach(1, Mode::read), nullptr);
}

}  // namespace
