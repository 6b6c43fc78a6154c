// Processes that are there and may not be looked into.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

#include "clients/mapped_clients_fixture.h"
#include "support/own_namespaces.h"
#include "support/without_capabilities.h"

namespace {

using QuaskTesting::MappedClientsTest;
using QuaskTesting::MappingClient;
using QuaskTesting::RecordingScanner;
using QuaskTesting::WithoutCapabilities;
using testing::Contains;
using testing::Not;
using Lines = std::vector<std::string>;

class UnreadProcessesTest : public MappedClientsTest
{
protected:
    // Any of them is enough to look into the client on some kernel.
    WithoutCapabilities const ordinary{CAP_SYS_PTRACE, CAP_SYS_ADMIN, CAP_PERFMON};
    Arguments const secretClient{"--secret", file("slots", "r")};

    static std::size_t unreadIn(Lines const& log)
    {
        return static_cast<std::size_t>(std::ranges::count_if(log, [](std::string const& line) {
            return line.find(" cannot be read: ") != line.npos;
        }));
    }

    std::string const feed = root.path() + "/feed";
    RecordingScanner scanner{5};
};

TEST_F(UnreadProcessesTest, AreCountedAndTheReasonIsTraced)
{
    MappingClient const client(secretClient);
    EXPECT_EQ(scanner.extractMmapInfo(feed), Lines{});
    Lines const log = scanner.takeLog();
    EXPECT_THAT(log, Contains("5 file /proc/" + std::to_string(client.pid()) +
                              "/maps cannot be read: Permission denied"));
    EXPECT_GE(scanner.unreadProcesses(), 1u);
    EXPECT_EQ(scanner.unreadProcesses(), unreadIn(log));
}

TEST_F(UnreadProcessesTest, AreReportedOnceWhenAllProcessesHaveBeenSeen)
{
    MappingClient const client(secretClient);
    MappingClient const other(secretClient);
    auto const expectLast = [this](auto const& extract) {
        extract();
        EXPECT_EQ(scanner.takeLog().back(),
                  "1 QuaskClientScanner: " + std::to_string(scanner.unreadProcesses()) +
                      " processes could not be looked into");
    };
    expectLast([this] { scanner.extractMmapInfo(feed); });
    expectLast([this] { scanner.extractMmapInfoByTable(root.path()); });
}

TEST_F(UnreadProcessesTest, OneAloneIsReportedInTheSingular)
{
    if (!QuaskTesting::inOwnNamespaces()) {
        GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
    }
    scanner.extractMmapInfo(feed);
    EXPECT_EQ(scanner.takeLog().back(), "1 QuaskClientScanner: 1 process could not be looked into")
        << "process 1 in these namespaces";
}

TEST_F(UnreadProcessesTest, AreCountedAgainByEachReport)
{
    {
        MappingClient const client(secretClient);
        scanner.extractMmapInfo(feed);
        EXPECT_GE(scanner.unreadProcesses(), 1u);
    }
    scanner.takeLog();
    scanner.extractMmapInfo(feed);
    EXPECT_EQ(scanner.unreadProcesses(), unreadIn(scanner.takeLog()));
}

TEST_F(UnreadProcessesTest, AreCountedWhenAllLinesAreAskedFor)
{
    MappingClient const client(secretClient);
    auto const mapsOf = [](pid_t pid) { return "/proc/" + std::to_string(pid) + "/maps"; };
    bool seesItself = false;
    bool seesTheClient = false;
    scanner.forEachMapsLine([&](std::string const& mapsPath, std::string_view line) {
        seesItself |= mapsPath == mapsOf(getpid()) && !line.empty();
        seesTheClient |= mapsPath == mapsOf(client.pid());
    });
    EXPECT_TRUE(seesItself);
    EXPECT_FALSE(seesTheClient);
    EXPECT_EQ(scanner.unreadProcesses(), unreadIn(scanner.takeLog()));
    EXPECT_GE(scanner.unreadProcesses(), 1u);
}

// With the capabilities to look into a process.
class ReadProcessesTest : public MappedClientsTest
{};

TEST_F(ReadProcessesTest, OneThatEndsMeanwhileIsNotUnread)
{
    RecordingScanner scanner{5};
    // More lines than one read gives: the next finds no process.
    std::optional<MappingClient> client(Arguments(100, file("slots", "r")));
    std::string const maps = "/proc/" + std::to_string(client->pid()) + "/maps";
    scanner.forEachMapsLine([&](std::string const& mapsPath, std::string_view /*line*/) {
        if (mapsPath == maps) {
            client.reset();
        }
    });
    EXPECT_THAT(scanner.takeLog(), Contains("5 file " + maps + " no longer exists"));
}

}  // namespace
