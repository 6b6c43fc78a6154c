#include "report/quask_header_scanner.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "report/report_fixture.h"
#include "support/unreadable_file.h"

namespace {

using namespace QuaskTesting;
using Quask::QuaskHeaderScanner;

class HeaderReportTest : public ReportFixture
{
protected:
    // Of the files that are there.
    int report(std::string const& file = "", char const* table = "feed/eq")
    {
        return run([&] {
            QuaskHeaderScanner scanner(file, table);
            EXPECT_TRUE(scanner.initialize());
            return scanner.doGetHeaders();
        });
    }

    void expectFailure(std::string const& expectedErr)
    {
        EXPECT_EQ(report(reportPath), 1);
        EXPECT_EQ(out, "");
        EXPECT_EQ(err, expectedErr);
        EXPECT_EQ(contentsOf(reportPath), "");
    }

    std::string const vandralHeader =
        " (56 bytes)\n"
        "\tMagic: 0x4c44564b53415551 (\"QUASKVDL\")\n"
        "\tVersion: 1\n"
        "\tOrvik: 462994 (pid: 4242 instanceId: 7)\n"
        "\tMinimum sequence: 0\n"
        "\tNumber of connected readers: 0\n"
        "\tNotifications: 0:0\n"
        "\tCurrent table: Primary (version: 0x00000000)\n";
};

TEST_F(HeaderReportTest, PrintsTheHeadersOfTheFourFiles)
{
    image.buckets(2).chain(0, {{0, bytesOf(1)}}).freeList({2, 1});
    image.slotsHeader.hash = 0xabc;
    image.lookaside = {{0, noSlot}, 0, 16, std::string(bytesOf(-3))};
    image.vandral2.minSequence = 5;
    image.vandral2.numReaders = 6;
    image.vandral2.notifications = {171, 12};
    image.vandral2.currentTable = {31, 1};
    write();
    EXPECT_EQ(report(), 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(out, "Quask table \"" + root.path() +
                       "/feed/eq\"\n"
                       "\n"
                       "Buckets header: (24 bytes)\n"
                       "\tMagic: 0x544b424b53415551 (\"QUASKBKT\")\n"
                       "\tVersion: 1\n"
                       "\tOrvik: 462994 (pid: 4242 instanceId: 7)\n"
                       "\tSize: 2 buckets\n"
                       "\tOwner pid: 4242\n"
                       "\n"
                       "Slots header: (176 + 24 bytes)\n"
                       "\tMagic: 0x544c534b53415551 (\"QUASKSLT\")\n"
                       "\tVersion: 4\n"
                       "\tOrvik: 462994 (pid: 4242 instanceId: 7)\n"
                       "\tHash: 0x00000abc\n"
                       "\tOccupied slots: 1\n"
                       "\tMapped slots: 0:3\n"
                       "\tMax slots: 1024\n"
                       "\tValue type: 4 bytes \"std::int32_t\"\n"
                       "\tClass type: \"Quask::Table\"\n"
                       "\tSlot size: 24 bytes\n"
                       "\tHead of free list: 2\n"
                       "\tLookaside version: 0x00000010\n"
                       "\tLookaside value: -3\n"
                       "\n"
                       "Primary vandral header:" +
                       vandralHeader +
                       "\n"
                       "Secondary vandral header: (56 bytes)\n"
                       "\tMagic: 0x4c44564b53415551 (\"QUASKVDL\")\n"
                       "\tVersion: 1\n"
                       "\tOrvik: 462994 (pid: 4242 instanceId: 7)\n"
                       "\tMinimum sequence: 5\n"
                       "\tNumber of connected readers: 6\n"
                       "\tNotifications: ab:12\n"
                       "\tCurrent table: Secondary (version: 0x0000001f)\n"
                       "\n");
}

TEST_F(HeaderReportTest, HeadersThatTheScanWouldRejectArePrintedAsTheyAre)
{
    image.bucketsHeader.magic = "foreign";
    image.bucketsHeader.numBuckets = 1000000;
    image.slotsHeader.version = 9;
    image.slotsHeader.mappedCount = 0xffffffff;
    image.vandral1.magic = "";
    write();
    EXPECT_EQ(report(), 0);
    EXPECT_EQ(err, "");
    EXPECT_NE(out.find("\tMagic: 0x6e676965726f66 (\"foreign.\")\n"), std::string::npos) << out;
    EXPECT_NE(out.find("\tSize: 1000000 buckets\n"), std::string::npos);
    EXPECT_NE(out.find("\tVersion: 9\n"), std::string::npos);
    EXPECT_NE(out.find("\tMapped slots: 0:4294967295\n"), std::string::npos);
    EXPECT_NE(out.find("\tMagic: 0x0 (\"........\")\n"), std::string::npos);
}

TEST_F(HeaderReportTest, WhatShortFilesLackIsPrintedAsZero)
{
    for (TableFile const file :
         {TableFile::buckets, TableFile::slots, TableFile::vandral1, TableFile::vandral2}) {
        image.resize(file, 1);
    }
    write();
    EXPECT_EQ(report(), 0);
    EXPECT_NE(out.find("Buckets header: (24 bytes)\n\tMagic: 0x51 (\"Q.......\")\n\tVersion: 0\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("Slots header: (176 + 0 bytes)\n\tMagic: 0x51 (\"Q.......\")\n"),
              std::string::npos);
    EXPECT_NE(out.find("Secondary vandral header: (56 bytes)\n\tMagic: 0x51 "), std::string::npos);
}

TEST_F(HeaderReportTest, ATableWithoutItsBucketFileIsNotReported)
{
    image.without(TableFile::buckets);
    write();
    expectFailure("Error attaching Quask reader for feed/eq\n");
}

TEST_F(HeaderReportTest, ATableWithoutItsSlotFileIsNotReported)
{
    image.without(TableFile::slots).without(TableFile::vandral1);
    write();
    expectFailure("Error attaching Quask reader for feed/eq\n");
}

TEST_F(HeaderReportTest, AnEmptyFileIsNotReported)
{
    image.resize(TableFile::slots, 0);
    write();
    expectFailure("Error attaching Quask reader for feed/eq\n");
}

TEST_F(HeaderReportTest, ATableWithoutOneOfItsVandralFilesIsNotReported)
{
    for (TableFile const file : {TableFile::vandral1, TableFile::vandral2}) {
        TableImage lacking = image;
        lacking.without(file).writeTo(root, "feed/eq");
        expectFailure("Error attaching Vandral reader for feed/eq\n");
    }
}

TEST_F(HeaderReportTest, AFileThatCannotBeOpenedIsNotReported)
{
    write();
    {
        UnreadableFile const unreadable(root.path() + "/feed/eq/slots");
        expectFailure("Error attaching Quask reader for feed/eq\n");
    }
    write();
    UnreadableFile const unreadable(root.path() + "/feed/eq/vandral.2");
    expectFailure("Error attaching Vandral reader for feed/eq\n");
}

TEST_F(HeaderReportTest, TheReadersLogToTheTablesAndToTheScannersChannel)
{
    setenv("DOVAN_DEBUG", "Quask-feed/eq=0,QuaskScanner=0", 1);
    expectFailure(
        "Quask-feed/eq 0: BucketReader::attach() no shared memory region\n"
        "Error attaching Quask reader for feed/eq\n");
    image.without(TableFile::vandral2);
    write();
    expectFailure(
        "QuaskScanner 0: VandralReaderGeneric::attach(1) no shared memory region\n"
        "QuaskScanner 0: VandralReaderGeneric::attach() failed to attach to secondary  vandral "
        "table\n"
        "Error attaching Vandral reader for feed/eq\n");
}

TEST_F(HeaderReportTest, AReportFileReceivesItAllAndIsClosed)
{
    write();
    QuaskHeaderScanner scanner(reportPath, "feed/eq");
    ASSERT_TRUE(scanner.initialize());
    EXPECT_EQ(run([&] { return scanner.doGetHeaders(); }), 0);
    EXPECT_EQ(out, "");
    std::string const text = contentsOf(reportPath);
    EXPECT_EQ(text.find("Quask table \"" + root.path() + "/feed/eq\"\n\nBuckets header: (24"), 0u);
    EXPECT_EQ(text.substr(text.size() - vandralHeader.size() - 1), vandralHeader + "\n");
}

TEST_F(HeaderReportTest, AReportFileThatTakesNothingIsNotAFailure)
{
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "no full device";
    }
    write();
    EXPECT_EQ(report("/dev/full"), 0);
    EXPECT_EQ(err, "");
}

TEST_F(HeaderReportTest, WithoutATableNameTheRootDirectoryIsTheTable)
{
    image.writeTo(root, "");
    EXPECT_EQ(report("", nullptr), 0);
    EXPECT_EQ(out.find("Quask table \"" + root.path() + "\"\n\n"), 0u) << out;
}

}  // namespace
