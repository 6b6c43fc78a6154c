// Where the reports go.

#include "report/quask_scanner_base.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "report/report_fixture.h"

namespace {

using namespace QuaskTesting;

// Shows where the report would go.
class Scanner final : public Quask::QuaskScannerBase
{
public:
    using QuaskScannerBase::QuaskScannerBase;

    std::ostream* output() const { return out; }
    bool hasOpenFile() const { return fileStream.is_open(); }
};

class ScannerOutputTest : public ReportFixture
{};

TEST_F(ScannerOutputTest, WithoutAFileNameTheReportGoesToStandardOutput)
{
    Scanner scanner("", "feed/eq");
    EXPECT_EQ(scanner.output(), nullptr);
    EXPECT_TRUE(scanner.initialize());
    EXPECT_EQ(scanner.output(), &std::cout);
    EXPECT_FALSE(scanner.hasOpenFile());
}

TEST_F(ScannerOutputTest, AMissingFileIsMade)
{
    Scanner scanner(reportPath, nullptr);
    EXPECT_TRUE(scanner.initialize());
    ASSERT_NE(scanner.output(), nullptr);
    *scanner.output() << "text" << std::flush;
    EXPECT_EQ(contentsOf(reportPath), "text");
}

TEST_F(ScannerOutputTest, AFileThatIsThereIsEmptied)
{
    root.writeFile("report", "of the day before");
    Scanner scanner(reportPath, nullptr);
    EXPECT_TRUE(scanner.initialize());
    EXPECT_EQ(contentsOf(reportPath), "");
}

TEST_F(ScannerOutputTest, AFileInAMissingDirectoryCannotBeOpened)
{
    std::string const path = root.path() + "/missing/report";
    Scanner scanner(path, "feed/eq");
    EXPECT_FALSE(run([&] { return scanner.initialize(); }));
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "Error opening " + path + "\n");
    EXPECT_EQ(scanner.output(), nullptr);
    EXPECT_FALSE(std::filesystem::exists(root.path() + "/missing"));
}

TEST_F(ScannerOutputTest, ADirectoryCannotBeOpened)
{
    Scanner scanner(root.path(), "feed/eq");
    EXPECT_FALSE(run([&] { return scanner.initialize(); }));
    EXPECT_EQ(err, "Error opening " + root.path() + "\n");
}

TEST_F(ScannerOutputTest, TheFileIsClosedWithTheScanner)
{
    {
        Scanner scanner(reportPath, nullptr);
        ASSERT_TRUE(scanner.initialize());
        *scanner.output() << "unflushed";
        EXPECT_TRUE(scanner.hasOpenFile());
    }
    EXPECT_EQ(contentsOf(reportPath), "unflushed");
}

}  // namespace
