#include "support/mapped_files.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <iostream>

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

class MappedFilesDeathTest : public testing::Test
{
protected:
    QuaskTesting::PrivateRoot root;
};

TEST_F(MappedFilesDeathTest, AFileCutShortEndsTheRunWithOneLineThatNamesIt)
{
    std::string const path = root.writeFile("feed/eq/slots", std::string(20000, 'x'));
    Shared segment((root.path() + "/feed/eq").c_str(), "slots", false, 0, false);
    auto const* const bytes = static_cast<char const*>(segment.attach(20000, Mode::read));
    ASSERT_NE(bytes, nullptr);
    std::filesystem::resize_file(path, 100);
    EXPECT_EXIT(readByte(bytes + 16384), testing::ExitedWithCode(1),
                "^Quask table file " + path + " was cut short while it was being read\n$");
}

TEST_F(MappedFilesDeathTest, WhatWasPrintedBeforeIsOnTheOutput)
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

TEST_F(MappedFilesDeathTest, AResizedSegmentIsStillWatched)
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

TEST_F(MappedFilesDeathTest, AnyOtherBusErrorEndsTheProcessAsEver)
{
    root.writeFile("slots", "x");
    Shared segment(root.path().c_str(), "slots", false, 0, false);
    ASSERT_NE(segment.attach(1, Mode::read), nullptr);
    EXPECT_EXIT(
        {
            raise(SIGBUS);
            raise(SIGBUS);
        },
        testing::KilledBySignal(SIGBUS), "");
}

}  // namespace
