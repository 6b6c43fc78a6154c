#include <gtest/gtest.h>

#include <set>

#include "interleave/header_copies.h"
#include "mem/atomics.h"

// That the search leaves no schedule out.
namespace {

using namespace QuaskTesting;
using Telling = InterleavedMemory::Telling;

TEST(Choices, GoThroughAllRows)
{
    Choices choices;
    std::set<std::pair<Moment, Moment>> rows;
    do {
        // What there is to choose from depends on what was chosen before.
        Moment const first = choices.take(only(1) | only(4) | only(63));
        rows.emplace(first, choices.take(first == 4 ? only(7) : only(0) | only(first)));
    } while (choices.advance());
    EXPECT_EQ(rows,
              (std::set<std::pair<Moment, Moment>>{{1, 0}, {1, 1}, {4, 7}, {63, 0}, {63, 63}}));
}

BigCount binomial(unsigned n, unsigned k)
{
    BigCount result = 1;
    for (unsigned i = 1; i <= k; ++i) {
        result = result * (n - k + i) / i;
    }
    return result;
}

TEST(InterleavedMemory, CountsAllOrdersOfLoadsAndStoresThatDoNotMeet)
{
    Scenario scenario({}, {operationNamed("update the middle of A")});
    auto const result =
        scenario.exploreAll<InterleavedMemory>([](ScheduledMemory& memory, Exploration&) {
            return copyVandralHeader(memory, isOfOneMoment);
        });
    EXPECT_EQ(result.executions, 1u);
    ASSERT_EQ(scenario.stores.size(), 7u);
    // The version, seven words, and the version again.
    EXPECT_EQ(decimal(result.schedules), decimal(binomial(9 + 7, 7)));
}

// What the reader comes to, in each execution of a search.
struct Outcomes
{
    BigCount schedules = 0;
    std::uint64_t executions = 0;
    std::set<std::string> different;
};

template <typename Execution>
Outcomes outcomesOf(Scenario& scenario, Telling telling, Execution&& execution)
{
    Outcomes outcomes;
    auto const result = scenario.exploreAll<InterleavedMemory>(
        [&](ScheduledMemory& memory, Exploration&) {
            outcomes.different.insert(execution(memory));
            return std::string();
        },
        telling);
    outcomes.schedules = result.schedules;
    outcomes.executions = result.executions;
    return outcomes;
}

template <typename Execution>
void expectSameAsOneByOne(Scenario& scenario, Execution&& execution)
{
    Outcomes const oneByOne = outcomesOf(scenario, Telling::everyMoment, execution);
    Outcomes const reduced = outcomesOf(scenario, Telling::values, execution);
    EXPECT_EQ(decimal(oneByOne.schedules), std::to_string(oneByOne.executions));
    EXPECT_EQ(decimal(reduced.schedules), decimal(oneByOne.schedules));
    EXPECT_EQ(reduced.different, oneByOne.different);
    EXPECT_LT(reduced.executions, oneByOne.executions);
    EXPECT_GT(reduced.different.size(), 1u);
}

TEST(InterleavedMemory, CoversWhatEverySingleScheduleOfAHeaderCopyDoes)
{
    Operation const twoSteps = {"", [](SmallTable& table) {
                                    table.writer().setMinSequence(3);
                                    table.writer().setCurrentTable(1);
                                    return true;
                                }};
    Scenario scenario({}, {twoSteps});
    expectSameAsOneByOne(scenario, [](ScheduledMemory& memory) {
        std::string bytes;
        copyVandralHeader(memory, [&](ScheduledMemory const&, auto const& copy) {
            bytes.assign(reinterpret_cast<char const*>(&copy), sizeof copy);
            return std::string();
        });
        return bytes;
    });
}

TEST(InterleavedMemory, CoversWhatEverySingleScheduleOfAWalkDoes)
{
    for (char const* const operation : {"remove the head of B", "grow"}) {
        Scenario scenario({}, {operationNamed(operation)});
        expectSameAsOneByOne(scenario, [](ScheduledMemory& memory) {
            Quask::QuaskReaderGeneric reader(SmallTable::tableName);
            std::string outcome;
            EXPECT_TRUE(reader.attach() && reader.validate(outcome));
            SchedulesLoads const scheduling(memory, placesIn(reader));
            WalkRecorder recorder(memory, 8);
            reader.scan(recorder, 1, 1, Quask::Direction::upward, true);
            outcome = std::to_string(reader.chainRestarts()) + " " +
                      std::to_string(reader.readerStatistics().remaps);
            for (auto const& element : recorder.chains().at(0).elements) {
                outcome += " " + std::to_string(element.slot);
            }
            return outcome;
        });
    }
}

// A reader that waits for the writer would wait for ever when that has died.
TEST(Search, NoticesAReaderThatWaitsForTheWriter)
{
    Operation const notify = {"", [](SmallTable& table) {
                                  table.writer().notify();
                                  return true;
                              }};
    Scenario scenario({}, {notify});
    auto const result =
        scenario.exploreAll<InterleavedMemory>([](ScheduledMemory& memory, Exploration&) {
            std::uint32_t words[2] = {};
            SchedulesLoads const scheduling(memory, [](void const*) {
                return std::pair{TableFile::vandral1, std::uint64_t(44)};
            });
            while (Mem::Atomics::load32(words, std::memory_order_relaxed) == 0) {
            }
            return std::string();
        });
    EXPECT_EQ(result.violation.substr(0, result.violation.find('\n')),
              "the reader does not end although the writer stands still");
}

}  // namespace
