// Contents that ask for far more memory, text or time than the table's size warrants.

#include <gmock/gmock.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "faults/faults_fixture.h"
#include "support/live_file.h"

namespace {

using QuaskTesting::bytesOf;
using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::TableFile;
using QuaskTesting::TableImage;
using testing::HasSubstr;

class HostileContents : public QuaskTesting::FaultsTest
{
protected:
    // Runs without keeping the report, which may be long.
    Finished quaskUnread(std::vector<std::string> arguments) const
    {
        Command command = this->command(std::move(arguments));
        command.outDescriptor = open("/dev/null", O_WRONLY | O_CLOEXEC);
        Finished finished = QuaskTesting::run(command);
        close(command.outDescriptor);
        return finished;
    }

    // A chain of so many slots, slot i after slot i - 1, in bucket 0.
    static TableImage oneChain(std::uint32_t slotCount)
    {
        std::vector<TableImage::Element> elements;
        for (std::uint32_t slot = 0; slot < slotCount; ++slot) {
            elements.emplace_back(slot, "");
        }
        return TableImage::of("int", 4).buckets(1).chain(0, elements);
    }
};

TEST_F(HostileContents, TwentyThousandBucketsThatLeadToOneLongChainAreCorruption)
{
    constexpr std::uint32_t count = 20000;
    TableImage image = oneChain(count);
    image.bucketLinks.assign(count, image.bucketLinks[0]);
    image.writeTo(root, "feed");
    Finished const scan = quaskUnread({"feed"});
    EXPECT_THAT(scan.err, HasSubstr("QuaskReaderGeneric::scan() the chains up to bucket:68 lead to "
                                    "elements:1380000 slots:20000\n"));
    EXPECT_EQ(scan.signal, SIGABRT);
}

TEST_F(HostileContents, ZeroBucketsInAFileOfHolesThatLeadToALargeValueAreCorruption)
{
    TableImage::of("int", 64 * 1024)
        .buckets(1)
        .chain(0, {{0, ""}})
        .patch(TableFile::buckets, 16, bytesOf(std::uint32_t{1} << 28))
        .patch(TableFile::buckets, 24, bytesOf(std::uint64_t{0}))
        .writeTo(root, "feed");
    std::filesystem::resize_file(root.path() + "/feed/buckets", 24 + (std::uint64_t{8} << 28));
    Finished const scan = quaskUnread({"feed"});
    EXPECT_THAT(scan.err, HasSubstr("QuaskReaderGeneric::scan() the chains up to bucket:16400 lead "
                                    "to elements:16401 slots:1\n"));
    EXPECT_EQ(scan.signal, SIGABRT);
}

// The links that are rewritten are those by which a circle would be found first: those of the 1st,
// the 2nd, the 4th slot on the way and so on.
TEST_F(HostileContents, ARingWhoseLinksAreRewrittenTakesNoMoreMemoryThanItsSlotsDo)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer needs memory of its own";
#endif
    constexpr std::uint32_t slotCount = 100000;
    TableImage image = oneChain(slotCount);
    image.slotImages[slotCount - 1].next.value = 0;
    image.writeTo(root, "feed");

    QuaskTesting::LiveFile slots(root.path() + "/feed/slots");
    std::atomic<bool> ended = false;
    std::thread writer([&] {
        while (!ended) {
            for (std::uint32_t step = 0; step < 40; ++step) {
                auto const slot =
                    static_cast<std::uint32_t>(((std::uint64_t{1} << step) - 1) % slotCount);
                slots.relink(QuaskTesting::SlotsOffset::slot(24, slot), (slot + 1) % slotCount);
            }
        }
    });
    Command command = this->command({"feed"});
    command.limits[RLIMIT_DATA] = 24 * 1024 * 1024;
    Finished const scan = QuaskTesting::run(command);
    ended = true;
    writer.join();
    EXPECT_EQ(scan.out, "");
    EXPECT_THAT(scan.err, HasSubstr("chain of bucket:0 comes back to slot:"));
    EXPECT_EQ(scan.signal, SIGABRT);
}

}  // namespace
