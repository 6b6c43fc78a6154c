// quask EXPR: the real command line on tables that stand still.

#include <gtest/gtest.h>

#include <string>

#include "support/child_process.h"
#include "support/private_root.h"
#include "support/quask_program.h"
#include "support/table_files.h"

namespace {

using QuaskTesting::bytesOf;
using QuaskTesting::Finished;
using QuaskTesting::TableFile;
using QuaskTesting::TableImage;

class ScanCommand : public testing::Test
{
protected:
    Finished quask(std::vector<std::string> arguments) const
    {
        return QuaskTesting::run(QuaskTesting::quask(root, std::move(arguments)));
    }

    static TableImage prices()
    {
        return TableImage::of("std::int32_t", 4)
            .buckets(32)
            .chain(0, {{3, bytesOf(-2)}})
            .chain(31, {{5, bytesOf(42)}, {4, bytesOf(0)}});
    }

    QuaskTesting::PrivateRoot root;
};

TEST_F(ScanCommand, PrintsALineForEachBucketWithElementsAndTheCounts)
{
    prices().writeTo(root, "feed/eq");
    Finished const scan = quask({"feed/eq"});
    EXPECT_EQ(scan.out,
              "bucket[0] 3-->feffffff ffffffff --> none\n"
              "bucket[1f] 5-->2a000000 4-->00000000 ffffffff --> none\n"
              "Lookaside hits: 0\n"
              "Chain restarts: 0\n");
    EXPECT_EQ(scan.err, "");
    EXPECT_EQ(scan.exitStatus, 0);
}

TEST_F(ScanCommand, PrintsValuesInThePrettyAndTheVoskStyle)
{
    prices().writeTo(root, "eq");
    std::string const expected =
        "bucket[0] 3-->-2 ffffffff --> none\n"
        "bucket[1f] 5-->42 4-->0 ffffffff --> none\n"
        "Lookaside hits: 0\n"
        "Chain restarts: 0\n";
    EXPECT_EQ(quask({"-p", "eq"}).out, expected);
    EXPECT_EQ(quask({"-t", "eq"}).out, expected);
}

TEST_F(ScanCommand, PrintsEmptyBucketsOnlyWhenAsked)
{
    TableImage::of("int", 4).buckets(2).slots(1).writeTo(root, "idle");
    std::string const counts = "Lookaside hits: 0\nChain restarts: 0\n";
    EXPECT_EQ(quask({"idle"}).out, counts);
    EXPECT_EQ(quask({"-e", "idle"}).out,
              "bucket[0] ffffffff --> none\nbucket[1] ffffffff --> none\n" + counts);
}

TEST_F(ScanCommand, MarksAValueThatIsBeingRewritten)
{
    prices().rewriting(5, bytesOf(41), bytesOf(99)).writeTo(root, "eq");
    EXPECT_EQ(quask({"-p", "eq"}).out,
              "bucket[0] 3-->-2 ffffffff --> none\n"
              "bucket[1f] 5-->*41 4-->0 ffffffff --> none\n"
              "Lookaside hits: 1\n"
              "Chain restarts: 0\n");
}

TEST_F(ScanCommand, AFailedCheckIsReportedOnStandardOutputAndTheFailureOnStandardError)
{
    TableImage image = prices();
    image.bucketsHeader.version = 2;
    image.slotsHeader.version = 9;
    image.writeTo(root, "eq");
    Finished const scan = quask({"eq"});
    EXPECT_EQ(scan.out, "Quask eq validation failed: BucketTable::validate() bad version: 2\n");
    EXPECT_EQ(scan.err, "Error attaching to Quask eq\n");
    EXPECT_EQ(scan.exitStatus, 1);
}

TEST_F(ScanCommand, AFailedCheckIsReportedBeforeTheFailure)
{
    TableImage image = prices();
    image.bucketsHeader.version = 2;
    image.writeTo(root, "eq");
    QuaskTesting::Command command = QuaskTesting::quask(root, {"eq"});
    command.words.insert(command.words.begin(), {"/bin/sh", "-c", "exec \"$@\" 2>&1", "sh"});
    EXPECT_EQ(QuaskTesting::run(command).out,
              "Quask eq validation failed: BucketTable::validate() bad version: 2\n"
              "Error attaching to Quask eq\n");
}

TEST_F(ScanCommand, AnEmptySlotFilePrintsNothingOnStandardOutput)
{
    prices().resize(TableFile::slots, 0).writeTo(root, "eq");
    Finished const scan = quask({"eq"});
    EXPECT_EQ(scan.out, "");
    EXPECT_EQ(scan.err, "Error attaching to Quask eq\n");
    EXPECT_EQ(scan.exitStatus, 1);
}

TEST_F(ScanCommand, AnExceptionEndsTheRunAfterTheLinesOfTheBucketsBefore)
{
    TableImage image = prices();
    image.slotImages[5].next = {1, 77};
    image.writeTo(root, "eq");
    Finished const scan = quask({"eq"});
    EXPECT_EQ(scan.out, "bucket[0] 3-->feffffff ffffffff --> none\n");
    EXPECT_EQ(scan.err,
              "terminate called after throwing an instance of "
              "'Quask::CorruptionDetectedException'\n"
              "  what():  Quask::CorruptionDetectedException(\""
              "Quask::CorruptionDetectedException(\"SlotReaderGenericTable::getSlot out-of-range "
              "index: 77 max:5\")\")\n");
    EXPECT_EQ(scan.signal, SIGABRT);
}

TEST_F(ScanCommand, ACycleEndsTheRun)
{
    TableImage image = prices();
    image.slotImages[4].next = {1, 5};
    image.writeTo(root, "eq");
    Finished const scan = quask({"eq"});
    EXPECT_EQ(scan.out, "bucket[0] 3-->feffffff ffffffff --> none\n");
    EXPECT_NE(scan.err.find("QuaskReaderGeneric::scan() chain of bucket:31 comes back to slot:"),
              std::string::npos)
        << scan.err;
    EXPECT_EQ(scan.signal, SIGABRT);
}

TEST_F(ScanCommand, AValueLargerThanTheSlotFileEndsTheRun)
{
    TableImage image = prices();
    image.slotsHeader.valueSize = 0xffffffff;
    image.writeTo(root, "eq");
    Finished const scan = quask({"eq"});
    EXPECT_EQ(scan.out, "");
    EXPECT_NE(scan.err.find("no buffer for a value of size: 4294967295"), std::string::npos)
        << scan.err;
    EXPECT_EQ(scan.signal, SIGABRT);
}

TEST_F(ScanCommand, AProcessorWithoutTheAtomicLoadsScansNothing)
{
    prices().writeTo(root, "eq");
    QuaskTesting::Command command = QuaskTesting::quask(root, {"eq"});
    command.words[0] = QUASK_WITHOUT_ATOMICS;
    Finished const scan = QuaskTesting::run(command);
    EXPECT_EQ(scan.out, "");
    EXPECT_EQ(scan.err, "Hardware does not support Atomics\nError attaching to Quask eq\n");
    EXPECT_EQ(scan.exitStatus, 1);
}

}  // namespace
