// QuaskScannerBase::doScan() on tables that cannot be walked, or not to their end.

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <sstream>
#include <utility>

#include <malloc.h>

#include "base/exception.h"
#include "report/cpu_support_switch.h"
#include "report/quask_scanner_base.h"
#include "report/report_fixture.h"
#include "support/live_file.h"
#include "support/unreadable_file.h"

namespace {

using namespace QuaskTesting;
using Quask::CorruptionDetectedException;
using Quask::QuaskScannerBase;
using Quask::QuaskTextify;

class TableScanFaultTest : public ReportFixture
{
protected:
    // Of the files that are there.
    int scan(std::string const& file = "", char const* table = "feed/eq")
    {
        return run([&] {
            QuaskScannerBase scanner(file, table);
            EXPECT_TRUE(scanner.initialize());
            return scanner.doScan(QuaskTextify::Plain, false);
        });
    }

    // That the table of `image` is not scanned, with these words.
    void expectFailure(std::string const& expectedOut)
    {
        write();
        EXPECT_EQ(scan(), 1);
        EXPECT_EQ(out, expectedOut);
        EXPECT_EQ(err, "Error attaching to Quask feed/eq\n");
    }

    // That the scan of `image` throws this.
    void expectThrown(std::string const& message)
    {
        write();
        try {
            scan();
            ADD_FAILURE() << "the scan came to its end";
        } catch (CorruptionDetectedException const& exception) {
            EXPECT_EQ(exception.what(), message);
        }
    }
};

TEST_F(TableScanFaultTest, ATableThatIsNotThereCannotBeAttached)
{
    EXPECT_EQ(scan(), 1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "Error attaching to Quask feed/eq\n");
}

TEST_F(TableScanFaultTest, WithoutATableNameTheErrorNamesNone)
{
    EXPECT_EQ(scan("", nullptr), 1);
    EXPECT_EQ(err, "Error attaching to Quask \n");
}

TEST_F(TableScanFaultTest, AMissingBucketFileCannotBeAttached)
{
    image.without(TableFile::buckets);
    expectFailure("");
}

TEST_F(TableScanFaultTest, AnEmptyBucketFileCannotBeAttached)
{
    image.resize(TableFile::buckets, 0);
    expectFailure("");
}

TEST_F(TableScanFaultTest, AMissingSlotFileCannotBeAttached)
{
    image.without(TableFile::slots);
    expectFailure("");
}

TEST_F(TableScanFaultTest, AnEmptySlotFileCannotBeAttached)
{
    image.resize(TableFile::slots, 0);
    expectFailure("");
}

TEST_F(TableScanFaultTest, FilesThatCannotBeOpenedCannotBeAttached)
{
    for (char const* const file : {"buckets", "slots"}) {
        write();
        UnreadableFile const unreadable(root.path() + "/feed/eq/" + file);
        EXPECT_EQ(scan(), 1);
        EXPECT_EQ(out, "");
        EXPECT_EQ(err, "Error attaching to Quask feed/eq\n");
    }
}

TEST_F(TableScanFaultTest, ABucketHeaderThatFailsIsReportedAndTheSlotHeaderIsNotExamined)
{
    image.bucketsHeader.version = 2;
    image.slotsHeader.version = 9;
    expectFailure("Quask feed/eq validation failed: BucketTable::validate() bad version: 2\n");
}

TEST_F(TableScanFaultTest, ASlotHeaderThatFailsIsReported)
{
    image.slotsHeader.version = 9;
    expectFailure(
        "Quask feed/eq validation failed: SlotTable::Header::validate() bad version: 9\n");
}

TEST_F(TableScanFaultTest, AFailedCheckIsReportedOnStandardOutputEvenWithAReportFile)
{
    image.bucketsHeader.version = 2;
    write();
    EXPECT_EQ(scan(reportPath), 1);
    EXPECT_EQ(out, "Quask feed/eq validation failed: BucketTable::validate() bad version: 2\n");
    EXPECT_EQ(err, "Error attaching to Quask feed/eq\n");
    EXPECT_EQ(contentsOf(reportPath), "");
}

TEST_F(TableScanFaultTest, AProcessorWithoutTheAtomicLoadsReadsNothing)
{
    image.bucketsHeader.version = 2;
    write();
    cpuSupport = false;
    setenv("DOVAN_DEBUG", "Quask-feed/eq=0", 1);
    EXPECT_EQ(scan(), 1);
    cpuSupport = true;
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "Hardware does not support Atomics\nError attaching to Quask feed/eq\n");
}

TEST_F(TableScanFaultTest, WhatTheWalkThrowsComesAfterTheLinesOfTheBucketsBefore)
{
    image.buckets(3).chain(0, {{0, bytesOf(1)}}).chain(1, {{1, bytesOf(2)}});
    image.slotImages[1].next.value = 77;
    expectThrown(
        "Quask::CorruptionDetectedException(\"Quask::CorruptionDetectedException(\""
        "SlotReaderGenericTable::getSlot out-of-range index: 77 max:1\")\")");
    EXPECT_EQ(out, "bucket[0] 0-->01000000 ffffffff --> none\n");
    EXPECT_EQ(err, "");
}

TEST_F(TableScanFaultTest, AReportFileHasTheLinesBeforeTheExceptionGoesOn)
{
    image.buckets(3).chain(0, {{0, bytesOf(1)}});
    image.bucketLinks[1].value = 77;
    write();
    QuaskScannerBase scanner(reportPath, "feed/eq");
    ASSERT_TRUE(scanner.initialize());
    EXPECT_THROW(scanner.doScan(QuaskTextify::Plain, false), CorruptionDetectedException);
    EXPECT_EQ(contentsOf(reportPath), "bucket[0] 0-->01000000 ffffffff --> none\n");
}

TEST_F(TableScanFaultTest, AChainThatRunsInACircleIsCorruption)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    image.slotImages[0].next.value = 0;
    expectThrown("QuaskReaderGeneric::scan() chain of bucket:0 comes back to slot:0");
    EXPECT_EQ(out, "");
}

TEST_F(TableScanFaultTest, AValueLargerThanTheSlotFileIsCorruption)
{
    image.buckets(1).slots(3);
    image.slotsHeader.valueSize = 273;
    expectThrown(
        "QuaskScannerBase::doScan() no buffer for a value of size: 273 slot file size: "
        "272");
    image.slotsHeader.valueSize = 0xffffffff;
    expectThrown(
        "QuaskScannerBase::doScan() no buffer for a value of size: 4294967295 slot file "
        "size: 272");
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "");
}

// Acts when the first line is printed.
class ActingOutput final : public std::stringbuf
{
public:
    explicit ActingOutput(std::function<void()> action)
        : action_(std::move(action)), coutBefore_(std::cout.rdbuf(this))
    {}
    ActingOutput(ActingOutput const&) = delete;
    ActingOutput& operator=(ActingOutput const&) = delete;
    ~ActingOutput() override { std::cout.rdbuf(coutBefore_); }

protected:
    std::streamsize xsputn(char const* text, std::streamsize count) override
    {
        if (action_) {
            std::exchange(action_, nullptr)();
        }
        return std::stringbuf::xsputn(text, count);
    }

private:
    std::function<void()> action_;
    std::streambuf* coutBefore_;
};

// No bytes of it are read then.
TEST_F(TableScanFaultTest, AValueThatHasBecomeShorterShowsNoMemoryOfTheTool)
{
    mallopt(M_PERTURB, 'x');  // what memory holds that is not cleared
    image = TableImage::of("char[2000]", 2000).buckets(2).chain(1, {{0, "value"}});
    write();
    LiveFile slots(root.path() + "/feed/eq/slots");
    ActingOutput const output([&] { slots.store32(SlotsOffset::valueSize, 0); });
    QuaskScannerBase scanner("", "feed/eq");
    ASSERT_TRUE(scanner.initialize());
    EXPECT_EQ(scanner.doScan(QuaskTextify::Pretty, true), 0);
    EXPECT_EQ(output.str(),
              "bucket[0] ffffffff --> none\n"
              "bucket[1] 0-->\"\" ffffffff --> none\n"
              "Lookaside hits: 0\nChain restarts: 0\n");
    mallopt(M_PERTURB, 0);
}

TEST_F(TableScanFaultTest, AValueAsLargeAsTheSlotFileIsLeftToTheWalk)
{
    image.buckets(1).slots(3);
    image.slotsHeader.valueSize = 272;
    write();
    EXPECT_EQ(scan(), 0);
}

TEST_F(TableScanFaultTest, WhatTheDriverThrowsIsLoggedToTheScannersChannel)
{
    image.buckets(1);
    image.slotsHeader.valueSize = 0xffffffff;
    setenv("DOVAN_DEBUG", "QuaskScanner=0", 1);
    std::string const message =
        "QuaskScannerBase::doScan() no buffer for a value of size: 4294967295 slot file size: 200";
    expectThrown(message);
    EXPECT_EQ(err, "QuaskScanner 0: " + message + "\n");
}

TEST_F(TableScanFaultTest, WhatTheTablesSayIsLoggedToTheTablesChannel)
{
    setenv("DOVAN_DEBUG", "Quask-feed/eq=0", 1);
    EXPECT_EQ(scan(), 1);
    EXPECT_EQ(err,
              "Quask-feed/eq 0: BucketReader::attach() no shared memory region\n"
              "Error attaching to Quask feed/eq\n");
}

}  // namespace
