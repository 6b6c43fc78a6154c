#include "table/vandral.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/aligned_bytes.h"
#include "support/recording_handler.h"
#include "support/table_files.h"

namespace {

using namespace QuaskTesting;
using Quask::Vandral;
using testing::ElementsAre;

TEST(VandralHeader, CopiesEveryField)
{
    TableImage image;
    image.vandral1 = {.version = 2,
                      .orvik = 3,
                      .minSequence = 0x400000004,
                      .numReaders = 5,
                      .reserved28 = 6,
                      .currentTable = {7, 8},
                      .notifications = {9, 10},
                      .reserved48 = 11,
                      .reserved52 = 12};
    AlignedBytes const live(image.vandral1File());
    Vandral::Header const copy(live.as<Vandral::Header>());
    EXPECT_EQ(copy.magic, 0x4c44564b53415551u);
    EXPECT_EQ(copy.version, 2u);
    EXPECT_EQ(copy.orvik, 3u);
    EXPECT_EQ(copy.minSequence, 0x400000004u);
    EXPECT_EQ(copy.numReaders, 5u);
    EXPECT_EQ(copy.reserved28, 6u);
    EXPECT_EQ(copy.currentTable.version, 7u);
    EXPECT_EQ(copy.currentTable.value, 8u);
    EXPECT_EQ(copy.notifications.version, 9u);
    EXPECT_EQ(copy.notifications.value, 10u);
    EXPECT_EQ(copy.reserved48, 11u);
    EXPECT_EQ(copy.reserved52, 12u);
}

TEST(Vandral, HasTheSegmentsOfTheTwoFiles)
{
    PrivateRoot const root;
    RecordingHandler handler;
    Quask::RootPath const rootPath(handler, "eq", false);
    Vandral const vandral(handler, rootPath);
    std::string const prefix = "5 QuaskMem::QuaskMem() prefix: " + root.path() + "/eq";
    EXPECT_THAT(handler.lines, ElementsAre(prefix + " name:vandral.1 localMem:0",
                                           prefix + " name:vandral.2 localMem:0"));
}

}  // namespace
