// Real processes that have tables' files mapped, as the report on all tables shows them.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>

#include "clients/mapped_clients_fixture.h"
#include "support/own_namespaces.h"
#include "support/program_copy.h"

namespace {

using Quask::QuaskClientScanner;
using Quask::Model::QuaskTable;
using QuaskTesting::figures;
using QuaskTesting::MappedClientsTest;
using QuaskTesting::MappingClient;
using QuaskTesting::ProgramCopy;
using QuaskTesting::RecordingScanner;
using QuaskTesting::TableImage;
using Lines = std::vector<std::string>;

// Those that look at the mappings of all processes.
class AllMappedClientsTest : public MappedClientsTest
{
protected:
    void SetUp() override
    {
        if (!QuaskTesting::inOwnNamespaces()) {
            GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
        }
    }

    static std::string report()
    {
        return RecordingScanner(-1).reportOf(&QuaskClientScanner::doGetAllClientInfo);
    }

    std::string title(std::string const& table) const
    {
        return "Quask table \"" + root.path() + "/" + table + "\"\n";
    }
};

TEST_F(AllMappedClientsTest, TablesWithAndWithoutClientsComeInTheOrderOfTheirPaths)
{
    TableImage::of("int", 4).buckets(4).slots(8).writeTo(root, "a/b");
    TableImage::of("int", 4).buckets(4).slots(8).writeTo(root, "zeta");
    MappingClient const writer(writing());
    MappingClient const reader({file("slots", "r", "zeta")});
    EXPECT_EQ(report(), title("a/b") + figures + "Clients: None\n\n" + title("feed") + figures +
                            roles(shown(writer), "None", "None", "None") + title("zeta") + figures +
                            roles("None", "None", "None", shown(reader)));
}

TEST_F(AllMappedClientsTest, AMappedTableIsShownThoughItsFiguresAreMissing)
{
    MappingClient const writer(writing());
    std::filesystem::remove(root.path() + "/feed/buckets");
    std::filesystem::remove(root.path() + "/feed/vandral.2");
    EXPECT_EQ(report(), title("feed") +
                            "Capacity: slots:NA buckets:NA primary_notifications:NA "
                            "secondary_notifications:NA\n"
                            "Occupied slots: NA\n" +
                            roles(shown(writer), "None", "None", "None"));
}

TEST_F(AllMappedClientsTest, ATablesFilesAreReadUnderItsPathBelowTheRootDirectory)
{
    MappingClient const writer(writing());
    std::filesystem::remove(root.path() + "/feed/buckets");
    setenv("DOVAN_DEBUG", "Quask-feed=0", 1);
    testing::internal::CaptureStderr();
    std::set<QuaskTable> tables;
    EXPECT_FALSE(RecordingScanner(-1).getAllClients(root.path(), tables));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Quask-feed 0: BucketReader::attach() no shared memory region\n");
    unsetenv("DOVAN_DEBUG");
}

TEST_F(AllMappedClientsTest, ATableInNoRoleIsShownWithoutClients)
{
    MappingClient const client({file("orvik", "rw")});
    EXPECT_EQ(report(), title("feed") + figures + "Clients: None\n\n");
}

TEST_F(AllMappedClientsTest, AFileCalledLikeATablesIsATableWhereverItIs)
{
    std::string pattern = "/tmp/a-place-longer-than-the-root-directory.XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    std::ofstream(pattern + "/slots") << "anything";
    {
        MappingClient const reader({pattern + "/slots:r"});
        EXPECT_EQ(report(), title("feed") + figures + "Clients: None\n\nQuask table \"" + pattern +
                                "\"\n"
                                "Capacity: slots:NA buckets:NA primary_notifications:NA "
                                "secondary_notifications:NA\n"
                                "Occupied slots: NA\n" +
                                roles("None", "None", "None", shown(reader)));
    }
    std::filesystem::remove_all(pattern);
}

TEST_F(AllMappedClientsTest, ATableWhosePathIsNotLongerThanTheRootDirectorysIsOutOfRange)
{
    MappingClient const writer(writing());
    std::set<QuaskTable> tables;
    EXPECT_THROW(RecordingScanner(-1).getAllClients(root.path() + "/feed", tables),
                 std::out_of_range);
}

TEST_F(AllMappedClientsTest, AProcessInTwoTablesHasItsCommandLineReadOnce)
{
    TableImage::of("int", 4).writeTo(root, "other");
    MappingClient const writer({file("vandral.1", "rw"), file("vandral.1", "rw", "other")});
    RecordingScanner scanner(5);
    std::set<QuaskTable> tables;
    EXPECT_FALSE(scanner.getAllClients(root.path(), tables));
    std::string const pid = std::to_string(writer.pid());
    std::string const record = "5 " + pid + " mapping_client rw-s vandral.1 ";
    Lines const expected{"5 Analyzing quask " + root.path() + "/feed with mmapInfo.size: 1",
                         record,
                         "5 Extracted command mapping_client for pid " + pid,
                         "5 Analyzing quask " + root.path() + "/other with mmapInfo.size: 1",
                         record,
                         "5 Found command mapping_client in cache for " + pid};
    Lines lines = scanner.takeLog();
    lines.erase(lines.begin(), std::ranges::find(lines, expected.front()));  // of reading the maps
    EXPECT_EQ(lines, expected);
}

// The directory's name begins with a space, and the path is seen up to it: no name is left.
TEST_F(AllMappedClientsTest, AProcessWithoutANameEndsTheReports)
{
    ProgramCopy const program(MAPPING_CLIENT, " bin/client");
    MappingClient const writer(program.path(), writing());
    auto const errorOf = [](char const* table, int (QuaskClientScanner::*job)()) {
        QuaskClientScanner scanner("", table);
        EXPECT_TRUE(scanner.initialize());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_EQ((scanner.*job)(), 1);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        return testing::internal::GetCapturedStderr();
    };
    EXPECT_EQ(errorOf("feed", &QuaskClientScanner::doGetClientInfo),
              "Error getting clients of Quask feed\n");
    EXPECT_EQ(errorOf(nullptr, &QuaskClientScanner::doGetAllClientInfo),
              "Error getting readers and writers of Quask\n");

    QuaskTable table("before");
    EXPECT_TRUE(RecordingScanner(-1, "feed").getClients(root.path() + "/feed", table));
    EXPECT_EQ(table.name, "before");
}

}  // namespace
