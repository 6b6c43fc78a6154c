// Clients that were made to use up a report's memory.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "faults/faults_fixture.h"
#include "support/endless_command_line.h"
#include "support/forked.h"
#include "support/mapping_client.h"
#include "support/own_namespaces.h"
#include "support/pipe.h"
#include "support/small_file_system.h"

namespace {

using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::MappingClient;

bool mapSlots(char const* path)
{
    int const file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    bool const mapped = file >= 0 && ftruncate(file, 4096) == 0 &&
                        mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file, 0) != MAP_FAILED;
    close(file);
    return mapped;
}

// This program as a client, from the constructor's return on and until the object's end.
class ForkedClient
{
public:
    // `prepare` maps what the client has mapped; false when it cannot.
    template <typename Prepare>
    explicit ForkedClient(Prepare prepare)
        : process_([this, prepare] {
              bool const isHeard = write(ready_.writeEnd(), prepare() ? "y" : "n", 1) == 1;
              pause();
              return isHeard ? 0 : 1;
          })
    {
        ready_.closeWriteEnd();
        isReady_ = ready_.read() == "y";
    }

    bool isReady() const { return isReady_; }
    pid_t pid() const { return process_.pid(); }

private:
    QuaskTesting::Pipe ready_;
    QuaskTesting::Forked process_;
    bool isReady_ = false;
};

class HostileClient : public QuaskTesting::FaultsTest
{
protected:
    static constexpr unsigned long megabyte = 1024 * 1024;

    void SetUp() override
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "the sanitizer needs memory of its own";
#endif
        if (!QuaskTesting::inOwnNamespaces()) {
            GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
        }
    }

    Finished withMemory(int resource, unsigned long bytes, std::vector<std::string> arguments,
                        int outDescriptor = -1) const
    {
        Command command = this->command(std::move(arguments));
        command.limits[resource] = bytes;
        command.outDescriptor = outDescriptor;
        return QuaskTesting::run(command);
    }

    // A client whose command is 100 kB long.
    std::vector<std::string> mapping(std::size_t times) const
    {
        std::vector<std::string> arguments{"--as", longCommand};
        arguments.insert(arguments.end(), times, root.path() + "/feed/slots:r");
        return arguments;
    }

    std::string const figures =
        "Capacity: slots:1024 buckets:1 primary_notifications:0 secondary_notifications:0\n"
        "Occupied slots: 1\n";
    std::string const noFigures =
        "Capacity: slots:NA buckets:NA primary_notifications:NA secondary_notifications:NA\n"
        "Occupied slots: NA\n";
    std::string const onlyReader = "Writer: None\nShadow: None\nKeyshadow: None\nReader: ";
    std::string const longCommand = std::string(100'000, 'c');
};

TEST_F(HostileClient, WithALongCommandHasItInMemoryOnceForAllMappings)
{
    makeSmall("feed");
    {
        MappingClient const client(mapping(200));
        std::string expected = title("feed") + figures + onlyReader;
        for (int i = 0; i < 200; ++i) {
            expected += longCommand + "-" + std::to_string(client.pid()) + "(mapping_client) ";
        }
        expected += "\n\n";
        for (char const* const report : {"-w", "-a"}) {
            Finished const run = withMemory(RLIMIT_DATA, 4 * megabyte, {report, "feed"});
            EXPECT_TRUE(run.out == expected) << report;
            EXPECT_EQ(run.err, "");
            EXPECT_EQ(run.exitStatus, 0);
        }
    }
    MappingClient const client(mapping(10'000));
    int const null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    for (char const* const report : {"-w", "-a"}) {
        expectFinished(withMemory(RLIMIT_AS, 64 * megabyte, {report, "feed"}, null), "", "", 0);
    }
    close(null);
}

TEST_F(HostileClient, WithFilesInNestedLongDirectoriesHasTheirPathsInMemoryOnce)
{
    constexpr std::size_t depth = 300;
    std::string const name(200, 'd');
    QuaskTesting::SmallFileSystem const removedAtOnce(root.makeDirectory("deep"), 16 * megabyte);
    ForkedClient const client([&] {
        bool mapped = chdir((root.path() + "/deep").c_str()) == 0;
        for (std::size_t level = 1; mapped && level <= depth; ++level) {
            mapped =
                mkdir(name.c_str(), 0700) == 0 && chdir(name.c_str()) == 0 && mapSlots("slots");
        }
        return mapped;
    });
    ASSERT_TRUE(client.isReady());

    std::string const clients = noFigures + onlyReader + "faults_test-" +
                                std::to_string(client.pid()) + "(faults_test) \n\n";
    std::string expected;
    std::string path = "deep";
    for (std::size_t level = 1; level <= depth; ++level) {
        path += "/" + name;
        expected += title(path) + clients;
    }
    ASSERT_GT(expected.size(), 9'000'000u);
    Finished const run = withMemory(RLIMIT_DATA, 2 * expected.size(), {"-a"});
    EXPECT_TRUE(run.out == expected);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostileClient, WithAnEndlessCommandLineHasTheBeginningRead)
{
    makeSmall("feed");
    ForkedClient const client([&] {
        return mapSlots((root.path() + "/feed/slots").c_str()) &&
               QuaskTesting::showEndlessCommandLine(1024 * megabyte);
    });
    if (!client.isReady()) {
        GTEST_SKIP() << "this kernel lets no process choose its command line";
    }
    std::string const expected = title("feed") + figures + onlyReader + "-" +
                                 std::to_string(client.pid()) + "(faults_test) \n\n";
    for (char const* const report : {"-w", "-a"}) {
        Finished const run = withMemory(RLIMIT_AS, 64 * megabyte, {report, "feed"});
        expectFinished(run, expected, "", 0);
    }
}

}  // namespace
