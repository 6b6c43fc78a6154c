// Real processes that have a table's files mapped, as the reports show them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>

#include "clients/all_tables.h"
#include "clients/recording_scanner.h"
#include "support/mapping_client.h"
#include "support/private_root.h"
#include "support/process_list_lock.h"
#include "support/table_files.h"

namespace {

using Quask::QuaskClientScanner;
using Quask::Model::QuaskTable;
using QuaskTesting::MappingClient;
using QuaskTesting::ProcessListLock;
using QuaskTesting::RecordingScanner;
using QuaskTesting::TableImage;
using QuaskTesting::undisturbed;
using Arguments = std::vector<std::string>;
using Lines = std::vector<std::string>;

std::string const figures =
    "Capacity: slots:1024 buckets:4 primary_notifications:0 secondary_notifications:0\n"
    "Occupied slots: 0\n";

class MappedClientsTest : public testing::Test
{
protected:
    explicit MappedClientsTest(ProcessListLock::Mode mode = ProcessListLock::Mode::shared)
        : lock(mode)
    {
        setenv("J5_CHROOT", "1", 1);
        TableImage::of("int", 4).buckets(4).slots(8).writeTo(root, "feed");
    }

    ~MappedClientsTest() override { unsetenv("J5_CHROOT"); }

    // A client's argument: a file of the table "feed" or another, mapped "r" or "rw".
    std::string file(std::string const& name, std::string const& mode,
                     std::string const& tableName = "feed") const
    {
        return root.path() + "/" + tableName + "/" + name + ":" + mode;
    }

    Arguments writing(std::string const& table = "feed") const
    {
        return {file("slots", "rw", table), file("vandral.1", "rw", table)};
    }

    Arguments shadowing() const { return {file("vandral.1", "r"), file("slots", "r")}; }

    Arguments keyshadowing() const
    {
        return {file("orvik", "r"), file("vandral.1", "r"), file("slots", "r")};
    }

    static std::string shown(MappingClient const& client)
    {
        return "mapping_client-" + std::to_string(client.pid()) + "(mapping_client) ";
    }

    // What the report on the table says behind its title and figures.
    std::string clientsOf(char const* table)
    {
        std::string const text =
            RecordingScanner(-1, table).reportOf(&QuaskClientScanner::doGetClientInfo);
        std::string const start = "Quask table \"" + root.path() + "/" + table + "\"\n" + figures;
        EXPECT_TRUE(text.starts_with(start)) << text;
        return text.substr(std::min(start.size(), text.size()));
    }

    static std::string roles(std::string const& writer, std::string const& shadow,
                             std::string const& keyshadow, std::string const& reader)
    {
        return "Writer: " + writer + "\nShadow: " + shadow + "\nKeyshadow: " + keyshadow +
               "\nReader: " + reader + "\n\n";
    }

    ProcessListLock const lock;
    QuaskTesting::PrivateRoot root;
};

TEST_F(MappedClientsTest, EveryRoleIsShownInItsLine)
{
    MappingClient const writer(writing());
    MappingClient const shadow(shadowing());
    MappingClient const keyshadow(keyshadowing());
    MappingClient const reader({file("slots", "r")});
    EXPECT_EQ(clientsOf("feed"),
              roles(shown(writer), shown(shadow), shown(keyshadow), shown(reader)));
}

TEST_F(MappedClientsTest, AWriterAlone)
{
    MappingClient const writer(writing());
    EXPECT_EQ(clientsOf("feed"), roles(shown(writer), "None", "None", "None"));
}

TEST_F(MappedClientsTest, AClientIsGoneWithItsProcess)
{
    {
        MappingClient const writer(writing());
        EXPECT_EQ(clientsOf("feed"), roles(shown(writer), "None", "None", "None"));
    }
    EXPECT_EQ(clientsOf("feed"), "Clients: None\n\n");
}

TEST_F(MappedClientsTest, FilesMappedInNoRoleMakeNoClient)
{
    MappingClient const client(
        {file("buckets", "rw"), file("vandral.2", "rw"), file("orvik", "rw"), file("slots", "rw")});
    EXPECT_EQ(clientsOf("feed"), "Clients: None\n\n");
}

TEST_F(MappedClientsTest, AWriterThatMapsTwiceIsShownTwice)
{
    MappingClient const writer({file("vandral.1", "rw"), file("vandral.1", "rw")});
    EXPECT_EQ(clientsOf("feed"), roles(shown(writer) + shown(writer), "None", "None", "None"));
}

TEST_F(MappedClientsTest, AShadowReaderThatMapsSlotsTwiceIsAPlainReaderToo)
{
    MappingClient const shadow({file("vandral.1", "r"), file("slots", "r"), file("slots", "r")});
    EXPECT_EQ(clientsOf("feed"), roles("None", shown(shadow), "None", shown(shadow)));
}

TEST_F(MappedClientsTest, ADeletedFileStillCounts)
{
    MappingClient const writer(writing());
    std::filesystem::remove(root.path() + "/feed/vandral.1");
    QuaskTable table;
    EXPECT_FALSE(RecordingScanner(-1, "feed").getClients(root.path() + "/feed", table));
    EXPECT_EQ(table.printClients(Quask::QuaskType::writer), shown(writer));
}

TEST_F(MappedClientsTest, TheCommandIsWhatTheCommandLineSaysAndTheNameThatOfTheProgram)
{
    auto const shownAs = [this](std::string const& name) {
        MappingClient const writer({"--as", name, file("vandral.1", "rw")});
        std::string const pid = std::to_string(writer.pid());
        std::string text = clientsOf("feed");
        text = text.substr(0, text.find('\n'));
        return text.replace(text.find(pid), pid.size(), "PID");
    };
    EXPECT_EQ(shownAs("/usr/bin/feeder"), "Writer: feeder-PID(mapping_client) ");
    EXPECT_EQ(shownAs("feeder"), "Writer: feeder-PID(mapping_client) ");
    EXPECT_EQ(shownAs("/opt/my feeder/run"), "Writer: my-PID(mapping_client) ");
    EXPECT_EQ(shownAs("feeder: idle/busy"), "Writer: feeder:-PID(mapping_client) ");
    EXPECT_EQ(shownAs("/usr/bin/"), "Writer: -PID(mapping_client) ");
    EXPECT_EQ(shownAs(" feeder"), "Writer: -PID(mapping_client) ");
    EXPECT_EQ(shownAs(""), "Writer: -PID(mapping_client) ");
}

// A copy of the client's program in a directory of its own, not in memory, where programs may be
// barred.
class ProgramCopy
{
public:
    explicit ProgramCopy(std::string const& relative)
    {
        std::string pattern = testing::TempDir() + "quask-test.XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no directory for a program");
        }
        directory_ = pattern;
        path_ = directory_ + "/" + relative;
        std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
        std::filesystem::copy_file(MAPPING_CLIENT, path_);
    }
    ProgramCopy(ProgramCopy const&) = delete;
    ProgramCopy& operator=(ProgramCopy const&) = delete;
    ~ProgramCopy() { std::filesystem::remove_all(directory_); }

    std::string const& path() const { return path_; }

private:
    std::string directory_;
    std::string path_;
};

TEST_F(MappedClientsTest, AProgramsNameEndsAtItsFirstBlank)
{
    ProgramCopy const program("odd-(name) of it");
    MappingClient const writer(program.path(), writing());
    EXPECT_EQ(clientsOf("feed"),
              roles("odd-(name)-" + std::to_string(writer.pid()) + "(odd-(name)) ", "None", "None",
                    "None"));
}

TEST_F(MappedClientsTest, ATableWhoseNameHasABlankHasNoClients)
{
    TableImage::of("int", 4).buckets(4).slots(8).writeTo(root, "my feed");
    MappingClient const writer(writing("my feed"));
    EXPECT_EQ(clientsOf("my feed"), "Clients: None\n\n");
}

// Those that look at the mappings of all processes.
class AllMappedClientsTest : public MappedClientsTest
{
protected:
    AllMappedClientsTest() : MappedClientsTest(ProcessListLock::Mode::alone) {}

    void SetUp() override
    {
        if (!QuaskTesting::allTablesCanBeReported(root.path())) {
            GTEST_SKIP() << "a process that is not the test's has a table mapped";
        }
    }

    // The sections of the report on all tables whose titles begin with `directory`.
    static std::string report(std::string const& directory)
    {
        std::string const text = undisturbed(
            [] { return RecordingScanner(-1).reportOf(&QuaskClientScanner::doGetAllClientInfo); });
        std::string sections;
        for (std::size_t start = 0; start < text.size();) {
            std::size_t const end = text.find("\n\n", start) + 2;
            std::string const section = text.substr(start, end - start);
            if (section.starts_with("Quask table \"" + directory)) {
                sections += section;
            }
            start = end;
        }
        return sections;
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
    EXPECT_EQ(report(root.path() + "/"),
              title("a/b") + figures + "Clients: None\n\n" + title("feed") + figures +
                  roles(shown(writer), "None", "None", "None") + title("zeta") + figures +
                  roles("None", "None", "None", shown(reader)));
}

TEST_F(AllMappedClientsTest, AMappedTableIsShownThoughItsFiguresAreMissing)
{
    MappingClient const writer(writing());
    std::filesystem::remove(root.path() + "/feed/buckets");
    std::filesystem::remove(root.path() + "/feed/vandral.2");
    EXPECT_EQ(report(root.path() + "/"),
              title("feed") +
                  "Capacity: slots:NA buckets:NA primary_notifications:NA "
                  "secondary_notifications:NA\n"
                  "Occupied slots: NA\n" +
                  roles(shown(writer), "None", "None", "None"));
}

TEST_F(AllMappedClientsTest, ATableInNoRoleIsShownWithoutClients)
{
    MappingClient const client({file("orvik", "rw")});
    EXPECT_EQ(report(root.path() + "/"), title("feed") + figures + "Clients: None\n\n");
}

TEST_F(AllMappedClientsTest, AFileCalledLikeATablesIsATableWhereverItLies)
{
    std::string pattern = testing::TempDir() + "a-place-longer-than-the-root-directory.XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    std::ofstream(pattern + "/slots") << "anything";
    {
        MappingClient const reader({pattern + "/slots:r"});
        EXPECT_EQ(report(pattern), "Quask table \"" + pattern +
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
    EXPECT_FALSE(undisturbed([&] { return scanner.getAllClients(root.path(), tables); }));
    std::string const pid = std::to_string(writer.pid());
    std::string const record = "5 " + pid + " mapping_client rw-s vandral.1 ";
    Lines const expected{"5 Analyzing quask " + root.path() + "/feed with mmapInfo.size: 1",
                         record,
                         "5 Extracted command mapping_client for pid " + pid,
                         "5 Analyzing quask " + root.path() + "/other with mmapInfo.size: 1",
                         record,
                         "5 Found command mapping_client in cache for " + pid};
    Lines lines = scanner.takeLog();
    lines.erase(lines.begin(), std::ranges::find(lines, expected.front()));  // others' tables
    lines.resize(std::min(lines.size(), expected.size()));
    EXPECT_EQ(lines, expected);
}

// The directory's name begins with a blank, and the path is seen up to it: no name is left.
TEST_F(AllMappedClientsTest, AProcessWithoutANameEndsTheReports)
{
    ProgramCopy const program(" bin/client");
    MappingClient const writer(program.path(), writing());
    auto const errorOf = [](char const* table, int (QuaskClientScanner::*job)()) {
        QuaskClientScanner scanner("", table);
        EXPECT_TRUE(scanner.initialize());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_EQ(undisturbed([&] { return (scanner.*job)(); }), 1);
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
