// quask-stat -m, as its text and as those who collect metrics read it.

#include <array>
#include <filesystem>
#include <fstream>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "stat/stat_fixture.h"
#include "support/waiting.h"

namespace {

using QuaskTesting::ChildProcess;
using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using QuaskTesting::TableImage;

class Metrics : public QuaskTesting::StatTest
{
protected:
    Metrics()
    {
        TableImage image = ordinary();
        image.slotsHeader.mappedVersion = 3;
        image.lookaside.sequence = 4 * 12345;
        image.vandral1.notifications = {9, 4000000000};
        image.vandral2.notifications = {9, 4000000000};
        image.writeTo(root, "feed/eq");
    }
};

TEST_F(Metrics, AreFamiliesWithASampleForEachTable)
{
    MappingClient const client = clientOf("feed/eq", reading);
    Finished const run = stat({"-m"});
    EXPECT_EQ(run.out,
              "# HELP quask_slots_used Slots that hold an element.\n"
              "# TYPE quask_slots_used gauge\n"
              "quask_slots_used{table=\"feed/eq\"} 20\n"
              "# HELP quask_slots_mapped Slots in the file.\n"
              "# TYPE quask_slots_mapped gauge\n"
              "quask_slots_mapped{table=\"feed/eq\"} 32\n"
              "# HELP quask_slots_max The most slots that there may be.\n"
              "# TYPE quask_slots_max gauge\n"
              "quask_slots_max{table=\"feed/eq\"} 100\n"
              "# HELP quask_buckets Number of buckets.\n"
              "# TYPE quask_buckets gauge\n"
              "quask_buckets{table=\"feed/eq\"} 40\n"
              "# HELP quask_file_bytes Bytes of the table's files.\n"
              "# TYPE quask_file_bytes gauge\n"
              "quask_file_bytes{table=\"feed/eq\"} 13600\n"
              "# HELP quask_writers Processes that have the table mapped as its writer.\n"
              "# TYPE quask_writers gauge\n"
              "quask_writers{table=\"feed/eq\"} 0\n"
              "# HELP quask_readers Plain readers.\n"
              "# TYPE quask_readers gauge\n"
              "quask_readers{table=\"feed/eq\"} 1\n"
              "# HELP quask_shadows Shadow readers.\n"
              "# TYPE quask_shadows gauge\n"
              "quask_shadows{table=\"feed/eq\"} 0\n"
              "# HELP quask_keyshadows Keyshadow readers.\n"
              "# TYPE quask_keyshadows gauge\n"
              "quask_keyshadows{table=\"feed/eq\"} 0\n"
              "# HELP quask_stale_clients Processes that hold removed or replaced files of the "
              "table.\n"
              "# TYPE quask_stale_clients gauge\n"
              "quask_stale_clients{table=\"feed/eq\"} 0\n"
              "# HELP quask_growths_total How often the number of slots has changed.\n"
              "# TYPE quask_growths_total counter\n"
              "quask_growths_total{table=\"feed/eq\"} 3\n"
              "# HELP quask_updates_total How often a value was rewritten in place.\n"
              "# TYPE quask_updates_total counter\n"
              "quask_updates_total{table=\"feed/eq\"} 12345\n"
              "# HELP quask_notifications_total Notifications of both notification tables.\n"
              "# TYPE quask_notifications_total counter\n"
              "quask_notifications_total{table=\"feed/eq\"} 8000000000\n"
              "# HELP quask_status As of quask-stat --check: 0 all right, 1 warning, 2 critical, "
              "3 cannot tell.\n"
              "# TYPE quask_status gauge\n"
              "quask_status{table=\"feed/eq\"} 0\n"
              "# HELP quask_unread_processes Processes that could not be looked into: clients may "
              "be missing.\n"
              "# TYPE quask_unread_processes gauge\n"
              "quask_unread_processes 0\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(Metrics, LeaveOutWhatCouldNotBeRead)
{
    ordinary().without(QuaskTesting::TableFile::slots).writeTo(root, "feed/eq");
    std::string const out = stat({"-m"}).out;
    EXPECT_EQ(out.find("quask_slots_used{"), out.npos);
    EXPECT_NE(out.find("quask_status{table=\"feed/eq\"} 3\n"), out.npos);
}

TEST_F(Metrics, OfNoTablesAreFamiliesWithoutSamples)
{
    Finished const run = stat({"-m", "nowhere"});
    EXPECT_EQ(run.out.find('{'), run.out.npos);
    EXPECT_NE(run.out.find("quask_unread_processes 0\n"), run.out.npos);
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(Metrics, HaveNamesInTheirLabelsWhateverTheyAre)
{
    ordinary().writeTo(root, "a\"b\\c\nd\xff");
    std::string const out = stat({"-m", "a"}).out;
    EXPECT_NE(out.find("quask_buckets{table=\"a\\\"b\\\\c\\nd\xef\xbf\xbd\"} 40\n"), out.npos)
        << out;
}

bool isInstalled(char const* program)
{
    return QuaskTesting::run({.words = {"sh", "-c", std::string("command -v ") + program}})
               .exitStatus == 0;
}

TEST_F(Metrics, PassTheCheckOfPrometheus)
{
    if (!isInstalled("promtool")) {
        GTEST_SKIP() << "promtool (Debian's prometheus) is not installed";
    }
    ordinary().writeTo(root, "a\"b\\c\nd\xff");
    std::string const text = root.writeFile("metrics", stat({"-m"}).out);
    Finished const run =
        QuaskTesting::run({.words = {"sh", "-c", "exec promtool check metrics < " + text}});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

// A port of the loopback interface that nobody listens at.
unsigned freePort()
{
    int const descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(descriptor, reinterpret_cast<sockaddr*>(&address), size);
    getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
    close(descriptor);
    return ntohs(address.sin_port);
}

// What is answered to a request for this path; empty while nobody listens.
std::string get(unsigned port, std::string const& path)
{
    int const descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::string const request = "GET " + path + " HTTP/1.0\r\n\r\n";
    std::string answer;
    if (connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        write(descriptor, request.data(), request.size()) > 0) {
        std::array<char, 4096> piece{};
        for (ssize_t count = 0; (count = read(descriptor, piece.data(), piece.size())) > 0;) {
            answer.append(piece.data(), static_cast<std::size_t>(count));
        }
    }
    close(descriptor);
    return answer;
}

TEST_F(Metrics, AreServedByTheNodeExporter)
{
    if (!isInstalled("prometheus-node-exporter")) {
        GTEST_SKIP() << "prometheus-node-exporter is not installed";
    }
    std::string const text = root.writeFile("collected/quask.prom", stat({"-m"}).out);
    std::string const port = std::to_string(freePort());
    ChildProcess exporter({.words = {"prometheus-node-exporter", "--collector.disable-defaults",
                                     "--collector.textfile",
                                     "--collector.textfile.directory=" + root.path() + "/collected",
                                     "--web.listen-address=127.0.0.1:" + port}});
    std::string answer;
    while (answer.empty() && !QuaskTesting::hasEnded(exporter.pid())) {
        answer = get(static_cast<unsigned>(std::stoul(port)), "/metrics");
    }
    EXPECT_NE(answer.find("\nquask_slots_used{table=\"feed/eq\"} 20\n"), answer.npos) << answer;
    EXPECT_NE(answer.find("\n# TYPE quask_notifications_total counter\n"
                          "quask_notifications_total{table=\"feed/eq\"} 8e+09\n"),
              answer.npos);
    EXPECT_NE(answer.find("\nnode_textfile_scrape_error 0\n"), answer.npos);
    exporter.kill(SIGTERM);
    exporter.finish();
}

}  // namespace
