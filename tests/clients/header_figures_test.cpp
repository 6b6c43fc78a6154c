#include "clients/header_figures.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "clients/recording_scanner.h"
#include "support/table_files.h"

namespace {

using Quask::Model::HeaderInfo;
using Quask::Model::QuaskTable;
using QuaskTesting::RecordingHandler;
using QuaskTesting::RecordingScanner;
using QuaskTesting::TableFile;
using QuaskTesting::TableImage;

class HeaderFiguresTest : public testing::Test
{
protected:
    HeaderFiguresTest()
    {
        image.slotsHeader.maxSlots = 4096;
        image.slotsHeader.occupiedSlots = 17;
        image.vandral1.notifications = {3, 1000};
        image.vandral2.notifications = {9, 2000};
    }

    ~HeaderFiguresTest() override { unsetenv("DOVAN_DEBUG"); }

    // The text of the figures of a table with these files.
    std::string figuresOf(TableImage const& files)
    {
        files.writeTo(root, "feed");
        return figures();
    }

    std::string figures()
    {
        QuaskTable table("feed");
        RecordingScanner().getHeaderInfo("feed", table);
        return table.headerInfo.print();
    }

    // What the table's channel says up to this level while the figures are read.
    std::string diagnosticsOf(TableImage const& files, char const* level)
    {
        files.writeTo(root, "feed");
        setenv("DOVAN_DEBUG", (std::string("Quask-feed=") + level).c_str(), 1);
        testing::internal::CaptureStderr();
        figures();
        return testing::internal::GetCapturedStderr();
    }

    QuaskTesting::PrivateRoot root;
    TableImage image = TableImage::of("std::int32_t", 4).buckets(40).slots(8);
};

std::string const noneOfTheSlots =
    "Capacity: slots:NA buckets:NA primary_notifications:1000 secondary_notifications:2000\n"
    "Occupied slots: NA\n";

std::string const noNotifications =
    "Capacity: slots:4096 buckets:40 primary_notifications:NA secondary_notifications:NA\n"
    "Occupied slots: 17\n";

TEST_F(HeaderFiguresTest, AreTheCapacitiesAndTheOccupiedSlots)
{
    EXPECT_EQ(figuresOf(image),
              "Capacity: slots:4096 buckets:40 primary_notifications:1000 "
              "secondary_notifications:2000\n"
              "Occupied slots: 17\n");
}

TEST_F(HeaderFiguresTest, AreTakenFromFilesThatAScanWouldReject)
{
    image.bucketsHeader.magic = "nonsense";
    image.slotsHeader.version = 99;
    image.slotsHeader.hash = 1;
    image.slotsHeader.mappedCount = 1'000'000;
    image.vandral1.magic = "";
    EXPECT_EQ(figuresOf(image),
              "Capacity: slots:4096 buckets:40 primary_notifications:1000 "
              "secondary_notifications:2000\n"
              "Occupied slots: 17\n");
}

TEST_F(HeaderFiguresTest, AFileTooShortForItsHeaderReadsAsZeros)
{
    for (TableFile const file : QuaskTesting::allTableFiles) {
        image.resize(file, 1);
    }
    EXPECT_EQ(figuresOf(image),
              "Capacity: slots:0 buckets:0 primary_notifications:0 secondary_notifications:0\n"
              "Occupied slots: 0\n");
}

TEST_F(HeaderFiguresTest, ATableWithoutFilesHasNone)
{
    QuaskTable table("feed");
    table.headerInfo.buckets = 1;
    RecordingScanner().getHeaderInfo("feed", table);
    EXPECT_EQ(table.headerInfo.print(), HeaderInfo().print());
}

TEST_F(HeaderFiguresTest, BucketsAndSlotsAreReadTogetherOrNotAtAll)
{
    EXPECT_EQ(figuresOf(TableImage(image).without(TableFile::buckets)), noneOfTheSlots);
    EXPECT_EQ(figuresOf(TableImage(image).resize(TableFile::buckets, 0)), noneOfTheSlots);
    EXPECT_EQ(figuresOf(TableImage(image).without(TableFile::slots)), noneOfTheSlots);
    EXPECT_EQ(figuresOf(TableImage(image).resize(TableFile::slots, 0)), noneOfTheSlots);
}

TEST_F(HeaderFiguresTest, TheNotificationsAreReadTogetherOrNotAtAll)
{
    EXPECT_EQ(figuresOf(TableImage(image).without(TableFile::vandral1)), noNotifications);
    EXPECT_EQ(figuresOf(TableImage(image).without(TableFile::vandral2)), noNotifications);
    EXPECT_EQ(figuresOf(TableImage(image).resize(TableFile::vandral2, 0)), noNotifications);
}

TEST_F(HeaderFiguresTest, TheOrvikFileIsNotNeeded)
{
    EXPECT_EQ(figuresOf(image), figuresOf(TableImage(image).without(TableFile::orvik)));
}

TEST_F(HeaderFiguresTest, AMissingBucketFileIsLogged)
{
    EXPECT_EQ(diagnosticsOf(TableImage(image).without(TableFile::buckets), "0"),
              "Quask-feed 0: BucketReader::attach() no shared memory region\n");
}

TEST_F(HeaderFiguresTest, AMissingSlotFileIsNotLogged)
{
    EXPECT_EQ(diagnosticsOf(TableImage(image).without(TableFile::slots), "0"), "");
}

TEST_F(HeaderFiguresTest, TheSizeOfTheBucketFileIsTraced)
{
    EXPECT_NE(diagnosticsOf(image, "5")
                  .find("Quask-feed 5: QuaskMem::memSize() localMem: 0 filename: " + root.path() +
                        "/feed/buckets memSize: 344\n"),
              std::string::npos);
}

TEST_F(HeaderFiguresTest, NothingStaysMapped)
{
    figuresOf(image);
    std::ifstream maps("/proc/self/maps");
    std::string const text{std::istreambuf_iterator<char>(maps), {}};
    EXPECT_NE(text.find("clients_test"), std::string::npos);
    EXPECT_EQ(text.find(root.path()), std::string::npos);
}

}  // namespace
