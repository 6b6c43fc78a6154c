// The client reports while processes come and go.

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "faults/faults_fixture.h"
#include "support/mapping_client.h"
#include "support/own_namespaces.h"

namespace {

using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using testing::HasSubstr;

// A process that has a table's slot file mapped and starts others, which inherit the mapping and
// end at once, as fast as it can: some hundred to some thousand a second.
class Churn
{
public:
    explicit Churn(std::string const& slotFile)
    {
        pid_t const parent = getpid();
        pid_ = fork();
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            int const file = open(slotFile.c_str(), O_RDONLY | O_CLOEXEC);
            mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file, 0);
            while (getppid() == parent) {
                startAndReap();
            }
            _exit(0);
        }
    }
    Churn(Churn const&) = delete;
    Churn& operator=(Churn const&) = delete;
    ~Churn()
    {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }

private:
    // A few at a time, so that there are always some that are just ending.
    static void startAndReap()
    {
        for (int i = 0; i < 4; ++i) {
            if (fork() == 0) {
                _exit(0);
            }
        }
        while (waitpid(-1, nullptr, 0) > 0) {
        }
    }

    pid_t pid_;
};

class VanishingProcesses : public QuaskTesting::FaultsTest
{
protected:
    VanishingProcesses() { makeSmall("feed"); }

    // Reports until one has met a process that was just ending.
    void expectSoundReports(std::vector<std::string> const& arguments) const
    {
        std::string const feed = root.path() + "/feed";
        MappingClient const writer({feed + "/slots:rw", feed + "/vandral.1:rw"});
        Churn const churn(feed + "/slots");
        std::string const title =
            "Quask table \"" + feed +
            "\"\nCapacity: slots:1024 buckets:1 primary_notifications:0 secondary_notifications:0\n"
            "Occupied slots: 1\nWriter: mapping_client-" +
            std::to_string(writer.pid()) +
            "(mapping_client) \nShadow: None\nKeyshadow: None\nReader: ";
        // A client without a command was gone by the time that its command line was asked for.
        bool vanished = false;
        for (int i = 0; (i < 50 || !vanished) && !HasFailure(); ++i) {
            Finished const report = quask(arguments);
            EXPECT_THAT(report.out, HasSubstr(title));
            EXPECT_EQ(report.err, "");
            EXPECT_EQ(report.exitStatus, 0);
            vanished = vanished || report.out.find(" -") != std::string::npos;
        }
    }
};

TEST_F(VanishingProcesses, DoNotDisturbTheReportOnATable)
{
    expectSoundReports({"-w", "feed"});
}

TEST_F(VanishingProcesses, DoNotDisturbTheReportOnAllTables)
{
    if (!QuaskTesting::inOwnNamespaces()) {
        GTEST_SKIP() << QuaskTesting::noOwnNamespaces;
    }
    expectSoundReports({"-a"});
}

}  // namespace
