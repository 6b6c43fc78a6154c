// QuaskScannerBase::doScan() on tables that can be walked.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "base/hex.h"
#include "report/quask_scanner_base.h"
#include "report/report_fixture.h"

namespace {

using namespace QuaskTesting;
using Quask::QuaskScannerBase;
using Quask::QuaskTextify;

class TableScanTest : public ReportFixture
{
protected:
    int scan(QuaskTextify::Style style = QuaskTextify::Plain, bool printEmpty = false,
             std::string const& file = "")
    {
        write();
        return run([&] {
            QuaskScannerBase scanner(file, "feed/eq");
            EXPECT_TRUE(scanner.initialize());
            return scanner.doScan(style, printEmpty);
        });
    }
};

std::string const noCounts = "Lookaside hits: 0\nChain restarts: 0\n";

TEST_F(TableScanTest, PrintsALineForEachBucketWithElementsAndTheCounts)
{
    image.buckets(32).chain(0, {{3, bytesOf(-2)}}).chain(31, {{5, bytesOf(42)}, {4, bytesOf(0)}});
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(out,
              "bucket[0] 3-->feffffff ffffffff --> none\n"
              "bucket[1f] 5-->2a000000 4-->00000000 ffffffff --> none\n" +
                  noCounts);
    EXPECT_EQ(err, "");
}

TEST_F(TableScanTest, TheSizeOfAFileIsLookedAtToMapItAndToCheckIt)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    setenv("DOVAN_DEBUG", "Quask-feed/eq=5", 1);
    EXPECT_EQ(scan(), 0);
    std::istringstream lines(err);
    std::string sizes;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("memSize()") != line.npos) {
            sizes += line.substr(line.rfind('/')) + "\n";
        }
    }
    std::string const buckets = "/buckets memSize: 32\n";
    std::string const slots = "/slots memSize: 224\n";
    EXPECT_EQ(sizes, buckets + slots + buckets + slots);
}

TEST_F(TableScanTest, OfAnEmptyTableTheCountsArePrinted)
{
    image.buckets(3);
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(out, noCounts);
    EXPECT_EQ(err, "");
}

TEST_F(TableScanTest, OfATableWithoutBucketsTheCountsArePrinted)
{
    EXPECT_EQ(scan(QuaskTextify::Plain, true), 0);
    EXPECT_EQ(out, noCounts);
}

TEST_F(TableScanTest, EmptyBucketsArePrintedWhenAskedFor)
{
    image.buckets(3).chain(1, {{0, bytesOf(1)}});
    EXPECT_EQ(scan(QuaskTextify::Plain, true), 0);
    EXPECT_EQ(out,
              "bucket[0] ffffffff --> none\n"
              "bucket[1] 0-->01000000 ffffffff --> none\n"
              "bucket[2] ffffffff --> none\n" +
                  noCounts);
}

TEST_F(TableScanTest, VoskAndPrettyShowValuesByTheirType)
{
    image.buckets(1).chain(0, {{0, bytesOf(-2)}});
    for (auto const style : {QuaskTextify::Vosk, QuaskTextify::Pretty}) {
        EXPECT_EQ(scan(style), 0);
        EXPECT_EQ(out, "bucket[0] 0-->-2 ffffffff --> none\n" + noCounts);
    }
}

TEST_F(TableScanTest, LargeValuesAreShownAsSmallOnes)
{
    for (unsigned const size : {65536u, 65537u, 300000u}) {
        std::string const text(size, 'a');
        std::string const type = "char[" + std::to_string(size) + "]";
        image = TableImage::of(type, size).buckets(3).chain(1, {{2, text}, {0, "b"}});
        image.rewriting(0, "b", "half");
        std::string const zeros(size - 1, '\0');
        EXPECT_EQ(scan(QuaskTextify::Plain, true), 0);
        EXPECT_TRUE(out == "bucket[0] ffffffff --> none\nbucket[1] 2-->" +
                               Dovan::dumpHex(text.data(), size) + " 0-->*" +
                               Dovan::dumpHex(("b" + zeros).data(), size) +
                               " ffffffff --> none\nbucket[2] ffffffff --> none\n"
                               "Lookaside hits: 1\nChain restarts: 0\n")
            << size;
        for (auto const style : {QuaskTextify::Vosk, QuaskTextify::Pretty}) {
            EXPECT_EQ(scan(style), 0);
            EXPECT_TRUE(out == "bucket[1] 2-->\"" + text +
                                   "\" 0-->*\"b\" ffffffff --> none\n"
                                   "Lookaside hits: 1\nChain restarts: 0\n")
                << size;
        }
    }
}

TEST_F(TableScanTest, AValueOfUnknownTypeIsShownInHexadecimalInEveryStyle)
{
    image = TableImage::of("Feed::Price", 8).buckets(1).chain(0, {{0, "abcdefgh"}});
    for (auto const style : {QuaskTextify::Plain, QuaskTextify::Vosk, QuaskTextify::Pretty}) {
        EXPECT_EQ(scan(style), 0);
        EXPECT_EQ(out, "bucket[0] 0-->61626364 65666768 ffffffff --> none\n" + noCounts);
    }
}

TEST_F(TableScanTest, ValuesWithoutBytesAreShownAsNothing)
{
    image = TableImage::of("Quask::EmptyValue", 0).buckets(1).chain(0, {{0, ""}, {1, ""}});
    for (auto const style : {QuaskTextify::Plain, QuaskTextify::Pretty}) {
        EXPECT_EQ(scan(style), 0);
        EXPECT_EQ(out, "bucket[0] 0--> 1--> ffffffff --> none\n" + noCounts);
    }
}

TEST_F(TableScanTest, CountsTheValuesTakenFromTheLookasideSlot)
{
    image.buckets(1)
        .chain(0, {{0, bytesOf(1)}, {1, bytesOf(2)}})
        .rewriting(0, bytesOf(1), bytesOf(9))
        .rewriting(1, bytesOf(1), bytesOf(9));
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(out,
              "bucket[0] 0-->*01000000 1-->*01000000 ffffffff --> none\n"
              "Lookaside hits: 2\n"
              "Chain restarts: 0\n");
}

TEST_F(TableScanTest, AReportFileReceivesItAllAndIsClosed)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    write();
    QuaskScannerBase scanner(reportPath, "feed/eq");
    ASSERT_TRUE(scanner.initialize());
    EXPECT_EQ(run([&] { return scanner.doScan(QuaskTextify::Plain, false); }), 0);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "");
    EXPECT_EQ(contentsOf(reportPath), "bucket[0] 0-->01000000 ffffffff --> none\n" + noCounts);
}

TEST_F(TableScanTest, AReportFileThatTakesNothingIsNotAFailure)
{
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "no full device";
    }
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    EXPECT_EQ(scan(QuaskTextify::Plain, false, "/dev/full"), 0);
    EXPECT_EQ(err, "");
}

TEST_F(TableScanTest, TheFilesNeedNotBeWritable)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    write();
    for (char const* const file : {"buckets", "slots"}) {
        std::filesystem::permissions(root.path() + "/feed/eq/" + file,
                                     std::filesystem::perms::owner_read);
    }
    QuaskScannerBase scanner("", "feed/eq");
    ASSERT_TRUE(scanner.initialize());
    EXPECT_EQ(run([&] { return scanner.doScan(QuaskTextify::Plain, false); }), 0);
}

// The table of the empty name is the root directory itself.
TEST_F(TableScanTest, WithoutATableNameTheRootDirectoryIsTheTable)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}}).writeTo(root, "");
    QuaskScannerBase scanner("", nullptr);
    ASSERT_TRUE(scanner.initialize());
    EXPECT_EQ(run([&] { return scanner.doScan(QuaskTextify::Plain, false); }), 0);
    EXPECT_EQ(out, "bucket[0] 0-->01000000 ffffffff --> none\n" + noCounts);
}

TEST_F(TableScanTest, ChangesNothing)
{
    image.buckets(1).chain(0, {{0, bytesOf(1)}});
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(contentsOf(root.path() + "/feed/eq/slots"), image.slotsFile());
    EXPECT_EQ(contentsOf(root.path() + "/feed/eq/buckets"), image.bucketsFile());
}

}  // namespace
