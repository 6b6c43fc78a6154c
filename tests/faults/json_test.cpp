// Files that cannot be read, and output that cannot be written, during a run of quask-json. How it
// ends in all other cases tests/json compares with quask.

#include <gmock/gmock.h>

#include <string>

#include "faults/cut_table.h"
#include "faults/full_file_system.h"
#include "support/mapping_client.h"

namespace {

using QuaskTesting::MappingClient;
using QuaskTesting::TableFile;

// The tests of a fixture with quask-json as the program, where it is built.
template <typename Fixture>
class WithJson : public Fixture
{
protected:
    void SetUp() override
    {
#ifdef QUASK_JSON_UNDER_TEST
        this->program = QUASK_JSON_UNDER_TEST;
        Fixture::SetUp();
#else
        GTEST_SKIP() << "quask-json is not built";
#endif
    }
};

class JsonOfCutTable : public WithJson<QuaskTesting::CutTableTest>
{};

TEST_F(JsonOfCutTable, EndsAfterTheLinesBeforeTheCutInTheSlotFile)
{
    expectEndWhereTheSlotFileIsCut();
}

TEST_F(JsonOfCutTable, EndsAfterTheLinesBeforeTheCutInTheBucketFile)
{
    expectEndWhereTheBucketFileIsCut();
}

class JsonOfUnreadablePages : public WithJson<QuaskTesting::UnreadablePagesTest>
{
protected:
    // The line of the client report on a table.
    std::string line(std::string const& table, std::string const& figures,
                     std::string const& readers) const
    {
        return R"({"table":")" + table + R"(","directory":")" + root.path() + "/" + table + "\"," +
               figures + R"(,"writers":[],"shadows":[],"keyshadows":[],"readers":[)" + readers +
               "],\"unreadProcesses\":0}\n";
    }

    std::string const noNotifications =
        R"("capacity":{"slots":1024,"buckets":2000,"primaryNotifications":null,)"
        R"("secondaryNotifications":null},"occupiedSlots":1)";
};

TEST_F(JsonOfUnreadablePages, HasNullForTheFiguresOfATable)
{
    makeTableWithHoles(TableFile::vandral2, 0);
    expectFinished(quask({"-w", "full/feed"}), line("full/feed", noNotifications, ""), "", 0);
}

TEST_F(JsonOfUnreadablePages, HasNullForTheFiguresOfTheSlotFile)
{
    makeTableWithHoles(TableFile::slots, 0);
    expectFinished(quask({"-w", "full/feed"}),
                   line("full/feed",
                        R"("capacity":{"slots":null,"buckets":null,"primaryNotifications":0,)"
                        R"("secondaryNotifications":0},"occupiedSlots":null)",
                        ""),
                   "", 0);
}

TEST_F(JsonOfUnreadablePages, HasAllTablesNonetheless)
{
    makeTableWithHoles(TableFile::vandral2, 0);
    makeSmall("feed");
    MappingClient const client({root.path() + "/full/feed/slots:r"});
    expectFinished(quask({"-a"}),
                   line("feed",
                        R"("capacity":{"slots":1024,"buckets":1,"primaryNotifications":0,)"
                        R"("secondaryNotifications":0},"occupiedSlots":1)",
                        "") +
                       line("full/feed", noNotifications,
                            R"({"command":"mapping_client","pid":)" + std::to_string(client.pid()) +
                                R"(,"program":"mapping_client"})"),
                   "", 0);
}

TEST_F(JsonOfUnreadablePages, HasNoHeadersAndALineThatNamesTheFile)
{
    makeTableWithHoles(TableFile::vandral2, 0);
    expectFinished(quask({"-x", "full/feed"}), "", unreadable("vandral.2"), 1);
}

TEST_F(JsonOfUnreadablePages, EndsAScanAfterTheLinesBefore)
{
    makeTableWithHoles(TableFile::buckets, 8192);
    expectFinished(quask({"full/feed"}),
                   R"({"bucket":1,"elements":[{"slot":0,"value":0,"hex":"00000000",)"
                   "\"lookaside\":false}]}\n",
                   unreadable("buckets"), 1);
}

class JsonOnFullFileSystem : public WithJson<QuaskTesting::FullFileSystemTest>
{};

TEST_F(JsonOnFullFileSystem, IsWrittenAsFarAsItFitsAndThenFails)
{
    expectAnErrorAfterWhatFits();
}

TEST_F(JsonOnFullFileSystem, InAReportFileIsIncompleteWithoutAMessage)
{
    expectAReportFileWithoutWhatDoesNotFit();
}

}  // namespace
