// Real processes that have a table's files mapped, as the report on the table shows them.

#include <filesystem>

#include "clients/mapped_clients_fixture.h"
#include "support/program_copy.h"

namespace {

using Quask::Model::QuaskTable;
using QuaskTesting::MappedClientsTest;
using QuaskTesting::MappingClient;
using QuaskTesting::ProgramCopy;
using QuaskTesting::RecordingScanner;
using QuaskTesting::TableImage;

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

TEST_F(MappedClientsTest, AProgramsNameEndsAtItsFirstSpace)
{
    ProgramCopy const program(MAPPING_CLIENT, "odd-(name) of it");
    MappingClient const writer(program.path(), writing());
    EXPECT_EQ(clientsOf("feed"),
              roles("odd-(name)-" + std::to_string(writer.pid()) + "(odd-(name)) ", "None", "None",
                    "None"));
}

TEST_F(MappedClientsTest, ATableWhoseNameHasASpaceHasNoClients)
{
    TableImage::of("int", 4).buckets(4).slots(8).writeTo(root, "my feed");
    MappingClient const writer(writing("my feed"));
    EXPECT_EQ(clientsOf("my feed"), "Clients: None\n\n");
}

}  // namespace
