// The client reports while processes come and go.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "faults/faults_fixture.h"
#include "support/mapping_client.h"
#include "support/own_namespaces.h"

namespace {

using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using testing::HasSubstr;

class VanishingProcesses : public QuaskTesting::FaultsTest
{
protected:
    VanishingProcesses() { makeSmall("feed"); }

    // Reports until one has met a process that was just ending.
    void expectSoundReports(std::vector<std::string> const& arguments) const
    {
        std::string const feed = root.path() + "/feed";
        MappingClient const writer({feed + "/slots:rw", feed + "/vandral.1:rw"});
        MappingClient const churn({"--churn", feed + "/slots:r"});
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
