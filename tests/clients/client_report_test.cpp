// The client reports of tables that no process maps; see also mapped_clients_test.cpp.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include <unistd.h>

#include "clients/recording_scanner.h"
#include "support/become_user.h"
#include "support/other_user.h"
#include "support/own_namespaces.h"
#include "support/table_files.h"

namespace {

using Quask::QuaskClientScanner;
using Quask::Model::QuaskTable;
using QuaskTesting::OtherUser;
using QuaskTesting::RecordingScanner;
using QuaskTesting::TableFile;
using QuaskTesting::TableImage;
using Lines = std::vector<std::string>;

class ClientReportTest : public testing::Test
{
protected:
    ClientReportTest() { setenv("J5_CHROOT", "", 1); }
    ~ClientReportTest() override { unsetenv("J5_CHROOT"); }

    static std::string reportOf(char const* table)
    {
        return RecordingScanner(-1, table).reportOf(&QuaskClientScanner::doGetClientInfo);
    }

    std::string clientless(std::string const& table) const
    {
        return "Quask table \"" + root.path() + "/" + table +
               "\"\n"
               "Capacity: slots:1024 buckets:4 primary_notifications:0 secondary_notifications:0\n"
               "Occupied slots: 0\n"
               "Clients: None\n\n";
    }

    QuaskTesting::PrivateRoot root;
    TableImage const image = TableImage::of("int", 4).buckets(4).slots(8);
};

TEST_F(ClientReportTest, ATableThatNoProcessMaps)
{
    image.writeTo(root, "feed/eq");
    EXPECT_EQ(reportOf("feed/eq"), clientless("feed/eq"));
}

TEST_F(ClientReportTest, ATableWithoutAnyFileIsReportedWithoutFigures)
{
    EXPECT_EQ(reportOf("gone"), "Quask table \"" + root.path() +
                                    "/gone\"\n"
                                    "Capacity: slots:NA buckets:NA primary_notifications:NA "
                                    "secondary_notifications:NA\n"
                                    "Occupied slots: NA\n"
                                    "Clients: None\n\n");
}

TEST_F(ClientReportTest, GoesToStandardOutputWithoutAFilesName)
{
    image.writeTo(root, "feed");
    QuaskClientScanner scanner("", "feed");
    ASSERT_TRUE(scanner.initialize());
    testing::internal::CaptureStdout();
    EXPECT_EQ(scanner.doGetClientInfo(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), clientless("feed"));
}

TEST_F(ClientReportTest, GoesToTheFileOtherwiseWhichTheJobCloses)
{
    image.writeTo(root, "feed");
    std::string const path = root.path() + "/report";
    QuaskClientScanner scanner(path, "feed");
    ASSERT_TRUE(scanner.initialize());
    testing::internal::CaptureStdout();
    EXPECT_EQ(scanner.doGetClientInfo(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    std::ifstream report(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(report), {}), clientless("feed"));
}

TEST_F(ClientReportTest, EveryTableBelowTheRootDirectoryIsAddedUnderItsPath)
{
    image.writeTo(root, "b");
    image.writeTo(root, "a/y");
    std::set<QuaskTable> tables;
    EXPECT_FALSE(RecordingScanner().addClientlessQuasks(root.path(), tables));
    std::string text;
    for (QuaskTable const& table : tables) {
        text += table.print();
    }
    EXPECT_EQ(text, clientless("a/y") + clientless("b"));
}

TEST_F(ClientReportTest, ATableOfWhichAnyFigureIsMissingIsSuppressed)
{
    TableImage(image).without(TableFile::vandral2).writeTo(root, "feed");
    std::set<QuaskTable> tables;
    RecordingScanner scanner;
    EXPECT_FALSE(scanner.addClientlessQuasks(root.path(), tables));
    EXPECT_TRUE(tables.empty());
    EXPECT_EQ(scanner.takeLog(),
              (Lines{"9 Determining clientless quasks", "9 Looking for feed in tables",
                     "5 Suppressing clientless quask feed with missing header info"}));
}

TEST_F(ClientReportTest, ATableThatIsThereByItsPathIsKept)
{
    image.writeTo(root, "feed");
    std::set<QuaskTable> tables{QuaskTable(root.path() + "/feed", {{1, "w", "w"}}, {}, {}, {})};
    EXPECT_FALSE(RecordingScanner().addClientlessQuasks(root.path(), tables));
    EXPECT_EQ(tables.size(), 1u);
    EXPECT_EQ(tables.begin()->clients.at(Quask::QuaskType::writer).size(), 1u);
}

TEST_F(ClientReportTest, ATableThatIsThereByItsBareNameIsPassedOver)
{
    image.writeTo(root, "feed");
    std::set<QuaskTable> tables{QuaskTable("feed")};
    EXPECT_FALSE(RecordingScanner().addClientlessQuasks(root.path(), tables));
    EXPECT_EQ(tables.size(), 1u);
}

TEST_F(ClientReportTest, WithoutARootDirectoryTheSearchFails)
{
    std::filesystem::remove(root.path());
    std::set<QuaskTable> tables;
    testing::internal::CaptureStderr();
    EXPECT_TRUE(RecordingScanner().addClientlessQuasks(root.path(), tables));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error searching for tables\n");
}

class AllTablesReportTest : public ClientReportTest
{
protected:
    void SetUp() override
    {
        if (!QuaskTesting::inOwnNamespaces()) {
            GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
        }
    }
};

TEST_F(AllTablesReportTest, FailsWithoutARootDirectory)
{
    std::filesystem::remove(root.path());
    QuaskClientScanner scanner("", nullptr);
    ASSERT_TRUE(scanner.initialize());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(scanner.doGetAllClientInfo(), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error searching for tables\nError adding clientless Quasks\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(AllTablesReportTest, SaysSoWhenThereIsNoTable)
{
    EXPECT_EQ(RecordingScanner(-1).reportOf(&QuaskClientScanner::doGetAllClientInfo),
              "No Quasks\n");
}

class RootWarningTest : public ClientReportTest
{
protected:
    static constexpr char const* warning = "You should run this command as root.\n";

    RootWarningTest() { unsetenv("J5_CHROOT"); }

    void SetUp() override
    {
        if (!OtherUser::exists()) {
            GTEST_SKIP() << "the system lets nobody become another user";
        }
    }

    // In a process of a death test: reports with standard output in the place of standard error.
    [[noreturn]] static void report(char const* outputFile)
    {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        QuaskClientScanner scanner(outputFile, "feed");
        std::exit(scanner.initialize() ? scanner.doGetClientInfo() : 98);
    }

    // The same as an ordinary user.
    [[noreturn]] void reportAsUser(char const* outputFile)
    {
        if (!user.become()) {
            std::exit(99);
        }
        report(outputFile);
    }

    OtherUser const user;

    std::string withoutFigures() const
    {
        return "Quask table \"" + root.path() +
               "/feed\"\n"
               "Capacity: slots:NA buckets:NA primary_notifications:NA "
               "secondary_notifications:NA\n"
               "Occupied slots: NA\n"
               "Clients: None\n\n";
    }
};

TEST_F(RootWarningTest, AnOrdinaryUserIsWarnedBeforeTheReport)
{
    EXPECT_EXIT(reportAsUser(""), testing::ExitedWithCode(0),
                testing::StrEq(warning + withoutFigures()));
}

TEST_F(RootWarningTest, TheWarningDoesNotGoToTheReportsFile)
{
    EXPECT_EXIT(reportAsUser("/dev/null"), testing::ExitedWithCode(0), testing::StrEq(warning));
}

TEST_F(RootWarningTest, TheVariableTakesTheWarningAwayWhateverItsValue)
{
    setenv("J5_CHROOT", "", 1);
    EXPECT_EXIT(reportAsUser(""), testing::ExitedWithCode(0), testing::StrEq(withoutFigures()));
}

TEST_F(RootWarningTest, TheProcessesOfOtherUsersArePassedOver)
{
    setenv("DOVAN_DEBUG", "QuaskScanner=5", 1);
    EXPECT_EXIT(reportAsUser(""), testing::ExitedWithCode(0),
                testing::HasSubstr("QuaskScanner 5: file /proc/" + std::to_string(getpid()) +
                                   "/maps cannot be read: Permission denied\n"));
    unsetenv("DOVAN_DEBUG");
}

TEST_F(RootWarningTest, RootIsNotWarned)
{
    auto const reportAsRoot = [] {
        if (getuid() != 0 && !QuaskTesting::becomeUser(0)) {
            std::exit(99);
        }
        report("");
    };
    EXPECT_EXIT(reportAsRoot(), testing::ExitedWithCode(0), testing::StrEq(withoutFigures()));
}

}  // namespace
