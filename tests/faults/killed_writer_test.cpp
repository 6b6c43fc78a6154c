// quask on tables whose writer was killed at a random moment.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <random>
#include <string>

#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "support/hot_writer.h"
#include "support/private_root.h"
#include "support/quask_program.h"
#include "support/scan_checker.h"
#include "support/shared_store.h"
#include "support/table_checks.h"

namespace {

using QuaskTesting::Finished;
using QuaskTesting::HotTable;
using QuaskTesting::HotWriter;
using QuaskTesting::ScanChecker;
using testing::HasSubstr;
using testing::MatchesRegex;

// A thousand at least in all four tests. Sanitizers make starting a program slow.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int moments = 10;
#else
constexpr int moments = 250;
#endif

class DiesAtStore final : public QuaskTesting::StoreObserver
{
public:
    explicit DiesAtStore(unsigned store) : left_(store) {}
    void beforeStore(void*, std::size_t, void const*, std::memory_order) override { live(); }
    void beforeLengthen(std::uint64_t) override { live(); }

private:
    void live()
    {
        if (left_-- == 0) {
            raise(SIGKILL);
        }
    }

    unsigned left_;
};

class KilledWriter : public testing::Test
{
protected:
    explicit KilledWriter(unsigned seed = 1) : random_(seed) {}

    // Runs for ever: the process is killed.
    [[noreturn]] static void change(HotWriter& writer, bool grows)
    {
        for (;;) {
            writer.step();
            if (grows) {
                grows = writer.addOne();
            }
        }
    }

    // A writer that is dead before it makes a certain store.
    void letDieAtStore(HotTable const& table)
    {
        auto const store = static_cast<unsigned>(random_() % 3000);
        pid_t const pid = fork();
        if (pid == 0) {
            HotWriter writer(directory_, table);
            DiesAtStore observer(store);
            QuaskTesting::ObserveStores const observing(observer);
            change(writer, table.maxSlots != 0);
        }
        expectKilled(pid);
    }

    // A writer that is killed from outside when it has worked for so many nanoseconds.
    void killAfterAMoment(HotTable const& table)
    {
        long const delay = static_cast<long>(random_() % 100000);
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        pid_t const pid = fork();
        if (pid == 0) {
            HotWriter writer(directory_, table);
            [[maybe_unused]] ssize_t const told = write(ends[1], "", 1);
            change(writer, table.maxSlots != 0);
        }
        close(ends[1]);
        char ready = 0;
        EXPECT_EQ(read(ends[0], &ready, 1), 1);
        close(ends[0]);
        timespec const pause{0, delay};
        nanosleep(&pause, nullptr);
        kill(pid, SIGKILL);
        expectKilled(pid);
    }

    // What is left must be a sound table for every report, before and after another takes over. The
    // lookaside hits of the first scan: not 0 when the writer died in the middle of an update.
    std::uint64_t expectSoundReports(HotTable const& table)
    {
        ScanChecker checker(table);
        scan(checker);

        Finished const headers = quask({"-x", "table"});
        EXPECT_EQ(headers.exitStatus, 0);
        EXPECT_EQ(headers.err, "");
        EXPECT_THAT(headers.out, HasSubstr("(\"QUASKSLT\")"));
        EXPECT_THAT(headers.out, HasSubstr("(\"QUASKVDL\")"));

        Finished const clients = quask({"-w", "table"});
        EXPECT_EQ(clients.exitStatus, 0);
        EXPECT_EQ(clients.err, "");
        EXPECT_THAT(clients.out, MatchesRegex("Quask table \"" + directory_ +
                                              "\"\nCapacity: slots:[0-9]+ buckets:[0-9]+ "
                                              "primary_notifications:0 secondary_notifications:0\n"
                                              "Occupied slots: [0-9]+\nClients: None\n\n"));
        {
            QuaskTesting::TableWriter const next(directory_);
        }
        QuaskTesting::expectSoundLists(QuaskTesting::TableImage::load(directory_));
        std::uint64_t const hits = checker.counts().lookasideHits;
        scan(checker);
        EXPECT_EQ(checker.counts().lookasideHits, hits);
        EXPECT_EQ(checker.violations(), std::vector<std::string>());
        return hits;
    }

    // Until at least one writer has died in the middle of an update.
    void expectSoundReportsAtAnyMoment(HotTable const& table)
    {
        std::uint64_t hits = 0;
        for (int i = 0; (i < moments || hits == 0) && !HasFailure(); ++i) {
            killAfterAMoment(table);
            hits += expectSoundReports(table);
        }
    }

    QuaskTesting::PrivateRoot root_;
    std::string const directory_ = root_.path() + "/table";

private:
    static void expectKilled(pid_t pid)
    {
        int status = 0;
        ASSERT_EQ(waitpid(pid, &status, 0), pid);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    }

    Finished quask(std::vector<std::string> arguments) const
    {
        return QuaskTesting::run(QuaskTesting::quask(root_, std::move(arguments)));
    }

    void scan(ScanChecker& checker) const
    {
        Finished const scan = quask({"table"});
        EXPECT_EQ(scan.exitStatus, 0);
        EXPECT_EQ(scan.err, "");
        checker.check(scan.out);
    }

    std::minstd_rand random_;
};

constexpr HotTable steady{.valueSize = 20, .buckets = 8, .stable = 20, .hot = 20};
constexpr HotTable growing{
    .valueSize = 20, .buckets = 8, .stable = 10, .hot = 10, .slots = 20, .maxSlots = 600};

TEST_F(KilledWriter, AtAnyStoreLeavesATableThatEveryReportReads)
{
    for (int i = 0; i < moments && !HasFailure(); ++i) {
        letDieAtStore(steady);
        expectSoundReports(steady);
    }
}

TEST_F(KilledWriter, AtAnyStoreOfATableThatGrowsLeavesATableThatEveryReportReads)
{
    for (int i = 0; i < moments && !HasFailure(); ++i) {
        letDieAtStore(growing);
        expectSoundReports(growing);
    }
}

TEST_F(KilledWriter, AtAnyMomentLeavesATableThatEveryReportReads)
{
    expectSoundReportsAtAnyMoment(steady);
}

TEST_F(KilledWriter, AtAnyMomentOfATableThatGrowsLeavesATableThatEveryReportReads)
{
    expectSoundReportsAtAnyMoment(growing);
}

}  // namespace
