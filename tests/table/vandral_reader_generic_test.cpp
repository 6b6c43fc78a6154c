#include "table/vandral_reader_generic.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "support/private_root.h"
#include "support/recording_handler.h"
#include "support/table_files.h"
#include "support/unreadable_file.h"

namespace {

using namespace QuaskTesting;
using Quask::VandralReaderGeneric;
using testing::ElementsAre;
using testing::IsEmpty;

class VandralReaderTest : public testing::Test
{
protected:
    bool attach()
    {
        image.writeTo(root, "eq");
        return vandral.attach();
    }

    PrivateRoot root;
    TableImage image;
    RecordingHandler handler{0};
    Quask::RootPath rootPath{handler, "eq", false};
    VandralReaderGeneric vandral{handler, rootPath};
};

TEST_F(VandralReaderTest, MapsTheHeadersOfBothFiles)
{
    image.vandral1.numReaders = 1;
    image.vandral2.numReaders = 2;
    EXPECT_EQ(vandral.primaryHeader, nullptr);
    EXPECT_EQ(vandral.secondaryHeader, nullptr);
    ASSERT_TRUE(attach());
    EXPECT_EQ(vandral.primaryHeader->numReaders, 1u);
    EXPECT_EQ(vandral.secondaryHeader->numReaders, 2u);
    EXPECT_THAT(handler.lines, IsEmpty());
}

TEST_F(VandralReaderTest, WithoutThePrimaryNothingIsMapped)
{
    image.without(TableFile::vandral1);
    EXPECT_FALSE(attach());
    EXPECT_EQ(vandral.primaryHeader, nullptr);
    EXPECT_EQ(vandral.secondaryHeader, nullptr);
    EXPECT_THAT(handler.lines,
                ElementsAre("0 VandralReaderGeneric::attach(0) no shared memory region",
                            "0 VandralReaderGeneric::attach() failed to attach to primary  vandral "
                            "table"));
}

TEST_F(VandralReaderTest, WithoutTheSecondaryThePrimaryIsMapped)
{
    image.without(TableFile::vandral2);
    EXPECT_FALSE(attach());
    EXPECT_NE(vandral.primaryHeader, nullptr);
    EXPECT_EQ(vandral.secondaryHeader, nullptr);
    EXPECT_THAT(handler.lines,
                ElementsAre("0 VandralReaderGeneric::attach(1) no shared memory region",
                            "0 VandralReaderGeneric::attach() failed to attach to secondary  "
                            "vandral table"));
}

TEST_F(VandralReaderTest, AnEmptyFileIsNoSharedMemoryRegion)
{
    image.resize(TableFile::vandral1, 0);
    EXPECT_FALSE(attach());
    EXPECT_THAT(handler.lines,
                ElementsAre("0 VandralReaderGeneric::attach(0) no shared memory region",
                            "0 VandralReaderGeneric::attach() failed to attach to primary  vandral "
                            "table"));
}

TEST_F(VandralReaderTest, AFileThatCannotBeMappedIsOnlySaidToHaveFailed)
{
    image.writeTo(root, "eq");
    {
        UnreadableFile const unreadable(root.path() + "/eq/vandral.2");
        EXPECT_FALSE(vandral.attach());
    }
    EXPECT_NE(vandral.primaryHeader, nullptr);
    EXPECT_THAT(handler.lines,
                ElementsAre("0 VandralReaderGeneric::attach() failed to attach to secondary  "
                            "vandral table"));
}

TEST_F(VandralReaderTest, NothingIsCheckedOfAHeader)
{
    image.vandral1.magic = "";
    image.vandral2.version = 99;
    EXPECT_TRUE(attach());
}

TEST_F(VandralReaderTest, WhatAShortFileLacksOfItsHeaderReadsAsZero)
{
    image.vandral1.numReaders = 3;
    image.vandral1.notifications = {4, 5};
    image.resize(TableFile::vandral1, 28).resize(TableFile::vandral2, 1);
    ASSERT_TRUE(attach());
    EXPECT_EQ(vandral.primaryHeader->numReaders, 3u);
    EXPECT_EQ(vandral.primaryHeader->notifications.version, 0u);
    EXPECT_EQ(vandral.secondaryHeader->magic, std::uint64_t('Q'));
}

TEST_F(VandralReaderTest, OnePageIsMappedWhateverTheSize)
{
    image.resize(TableFile::vandral1, 1 << 20);
    ASSERT_TRUE(attach());
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line) && line.find("/eq/vandral.1") == std::string::npos) {
    }
    std::size_t afterStart = 0;
    std::size_t const start = std::stoull(line, &afterStart, 16);
    EXPECT_EQ(std::stoull(line.substr(afterStart + 1), nullptr, 16) - start, Mem::pageSize_);
    EXPECT_EQ(line.substr(line.find(' '), 6), " r--s ");
}

TEST_F(VandralReaderTest, SaysNothingToAChannelThatIsSilent)
{
    RecordingHandler quiet(-1);
    VandralReaderGeneric silent(quiet, rootPath);
    EXPECT_FALSE(silent.attach());
    EXPECT_THAT(quiet.lines, IsEmpty());
}

}  // namespace
