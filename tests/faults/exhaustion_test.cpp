// Descriptors and memory that run out.

#include <gmock/gmock.h>

#include <csignal>
#include <list>

#include <sys/resource.h>

#include "faults/faults_fixture.h"
#include "support/mapping_client.h"

namespace {

using QuaskTesting::bytesOf;
using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::TableImage;
using testing::HasSubstr;

class Exhausted : public QuaskTesting::FaultsTest
{
protected:
    // Runs with so many descriptors, the three standard ones included.
    Finished withDescriptors(unsigned long count, std::vector<std::string> arguments) const
    {
        Command command = this->command(std::move(arguments));
        command.limits[RLIMIT_NOFILE] = count;
        return QuaskTesting::run(command);
    }

    Finished withMemory(int resource, unsigned long bytes, std::vector<std::string> arguments) const
    {
        Command command = this->command(std::move(arguments));
        command.limits[resource] = bytes;
        return QuaskTesting::run(command);
    }

    void SetUp() override
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "the sanitizer needs memory and descriptors of its own";
#endif
    }

    static constexpr unsigned long megabyte = 1024 * 1024;
};

TEST_F(Exhausted, TheScanManagesWithTwoDescriptors)
{
    makeSmall("feed");
    expectFinished(withDescriptors(5, {"feed"}), smallScan, "", 0);
}

TEST_F(Exhausted, WithOneDescriptorTheFinderSeesOnlyTheRootDirectory)
{
    makeSmall("feed");
    expectFinished(withDescriptors(4, {"feed"}), "", "No table was found.\n", 1);
}

TEST_F(Exhausted, TheFinderLeavesOutWhatIsDeeperThanItHasDescriptors)
{
    std::string deep = "d";
    for (int level = 2; level < 40; ++level) {
        deep += "/d";
    }
    makeSmall(deep + "/feed");
    makeSmall("near");
    expectFinished(withDescriptors(20, {"feed"}), "", "No table was found.\n", 1);
    expectFinished(withDescriptors(20, {"near"}), smallScan, "", 0);
    expectFinished(withDescriptors(60, {"feed"}), smallScan, "", 0);
}

TEST_F(Exhausted, TheHeaderReportEndsAtTheFileThatNoDescriptorIsLeftFor)
{
    makeSmall("feed");
    expectFinished(withDescriptors(5, {"-x", "feed"}), "",
                   "Error attaching Vandral reader for feed\n", 1);
}

TEST_F(Exhausted, TheClientReportShowsFiguresThatNoDescriptorIsLeftForAsNotAvailable)
{
    makeSmall("feed");
    Finished const run = withDescriptors(5, {"-w", "feed"});
    expectFinished(run,
                   "Quask table \"" + root.path() +
                       "/feed\"\nCapacity: slots:1024 buckets:1 primary_notifications:NA "
                       "secondary_notifications:NA\nOccupied slots: 1\nClients: None\n\n",
                   "", 0);
}

TEST_F(Exhausted, TheClientReportNamesMoreClientsThanItHasDescriptors)
{
    makeSmall("feed");
    std::list<QuaskTesting::MappingClient> clients;
    std::string names;
    for (int i = 0; i < 12; ++i) {
        clients.emplace_back(std::vector{root.path() + "/feed/slots:r"});
        names += "mapping_client-" + std::to_string(clients.back().pid()) + "(mapping_client) ";
    }
    EXPECT_THAT(withDescriptors(8, {"-w", "feed"}).out, HasSubstr("\nReader: " + names + "\n"));
}

TEST_F(Exhausted, ATableLargerThanTheAddressSpaceCannotBeAttached)
{
    small().resize(QuaskTesting::TableFile::slots, 512 * megabyte).writeTo(root, "feed");
    expectFinished(withMemory(RLIMIT_AS, 128 * megabyte, {"feed"}), "",
                   "Error attaching to Quask feed\n", 1);
}

TEST_F(Exhausted, AScanOfLargeValuesNeedsMemoryForTwoOfThem)
{
    std::string const value(4 * megabyte, '\x9c');
    TableImage image = TableImage::of("int8_t[4194304]", 4 * megabyte).buckets(2);
    image.chain(0, {{0, value}}).chain(1, {{1, value}}).writeTo(root, "feed");
    for (auto const& [style, size] :
         {std::pair{"-p", 2 * 24 * megabyte}, std::pair{"-e", 2 * 9 * megabyte}}) {
        Finished const run = withMemory(RLIMIT_DATA, 12 * megabyte, {style, "feed"});
        EXPECT_GT(run.out.size(), size);
        EXPECT_TRUE(
            run.out.ends_with(" ffffffff --> none\nLookaside hits: 0\nChain restarts: 0\n"));
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.exitStatus, 0);
    }
}

TEST_F(Exhausted, TheHeaderReportOfALargeValueNeedsMemoryForTheValueOnly)
{
    TableImage image = TableImage::of("int8_t[4194304]", 4 * megabyte);
    image.lookaside.value = std::string(4 * megabyte, '\x9c');
    image.writeTo(root, "feed");
    Finished const run = withMemory(RLIMIT_DATA, 8 * megabyte, {"-x", "feed"});
    EXPECT_THAT(run.out.substr(0, 1000), HasSubstr("\tLookaside value: {-100, -100, -100, "));
    EXPECT_GT(run.out.size(), 24 * megabyte);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(Exhausted, ALineLargerThanTheMemoryEndsTheScanAfterTheLinesBefore)
{
    TableImage image = TableImage::of("int", 4).buckets(2).chain(0, {{0, bytesOf(7)}});
    std::vector<TableImage::Element> elements;
    std::uint32_t const value = 1;
    for (std::uint32_t slot = 1; slot < 1000000; ++slot) {
        elements.emplace_back(slot, bytesOf(value));
    }
    image.chain(1, elements).writeTo(root, "feed");
    Finished const run = withMemory(RLIMIT_DATA, 8 * megabyte, {"feed"});
    EXPECT_EQ(run.out, "bucket[0] 0-->07000000 ffffffff --> none\n");
    EXPECT_THAT(run.err, HasSubstr("std::bad_alloc"));
    EXPECT_EQ(run.signal, SIGABRT);
}

TEST_F(Exhausted, MoreTablesThanTheMemoryHoldsEndTheSearch)
{
    for (int i = 0; i < 3000; ++i) {
        root.writeFile(std::string(200, 'd') + std::to_string(i) + "/slots", "");
    }
    Finished const run = withMemory(RLIMIT_DATA, megabyte, {"ddd"});
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("std::bad_alloc"));
    EXPECT_EQ(run.signal, SIGABRT);
}

TEST_F(Exhausted, AValueSizeThatNoMemoryIsLeftForIsCorruption)
{
    TableImage image = TableImage::of("int", 64 * megabyte).buckets(1);
    image.resize(QuaskTesting::TableFile::slots, 65 * megabyte).writeTo(root, "feed");
    Finished const run = withMemory(RLIMIT_DATA, 16 * megabyte, {"feed"});
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err,
                HasSubstr("QuaskScannerBase::doScan() no buffer for a value of size: 67108864 slot "
                          "file size: 68157440"));
    EXPECT_EQ(run.signal, SIGABRT);
}

}  // namespace
