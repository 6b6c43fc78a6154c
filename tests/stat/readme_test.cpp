// What README.md shows of quask-stat is what it prints.

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>

#include "stat/stat_fixture.h"

namespace {

using QuaskTesting::bytesOf;
using QuaskTesting::Command;
using QuaskTesting::Finished;
using QuaskTesting::MappingClient;
using QuaskTesting::TableImage;

class Readme : public QuaskTesting::StatTest
{
protected:
    // A table of 30 slots: these prices, each in a bucket of 8.
    static TableImage pricesIn(std::vector<std::vector<std::string>> const& chains)
    {
        TableImage image = TableImage::of("char[16]", 16).buckets(8);
        std::uint32_t slot = 0;
        for (std::uint32_t bucket = 0; bucket < chains.size(); ++bucket) {
            std::vector<TableImage::Element> elements;
            for (std::string const& price : chains[bucket]) {
                elements.emplace_back(slot++, price);
            }
            image.chain(bucket, elements);
        }
        image.slots(30).slotsHeader.maxSlots = 30;
        image.slotsHeader.freeHead = slot;
        image.bucketsHeader.ownerPid = 0;
        return image;
    }

    MappingClient clientAs(std::string const& name, std::string const& table,
                           std::vector<std::string> files) const
    {
        for (std::string& file : files) {
            file = root.path() + "/" + table + "/" + file;
        }
        files.insert(files.begin(), {"--as", name});
        return MappingClient(files);
    }

    // Columns are as wide as process IDs happen to be.
    static std::string squeezed(std::string const& text)
    {
        return std::regex_replace(text, std::regex(" +"), " ");
    }
};

TEST_F(Readme, ShowsWhatIsPrinted)
{
    pricesIn({{}, {"HAZEL 23.28"}, {}, {}, {"ASPEN 131.43", "BEECH 43.96"}, {}, {"MAPLE 200.49"}})
        .writeTo(root, "prices");
    TableImage orders = pricesIn({});
    orders.slotsHeader.occupiedSlots = 28;
    orders.slotsHeader.freeHead = 28;
    orders.bucketsHeader.ownerPid = 31337;
    orders.writeTo(root, "orders");
    pricesIn({{"OAK 7"}}).writeTo(root, "positions");
    MappingClient const stale = clientAs("old_view", "positions", reading);
    pricesIn({{"OAK 7"}}).writeTo(root, "positions");
    MappingClient const positions = clientAs("book", "positions", writing);
    MappingClient const prices = clientAs("price_feed", "prices", writing);
    MappingClient const reader = clientAs("risk_view", "prices", reading);
    std::map<std::string, pid_t> const shown{{"24364", prices.pid()},
                                             {"24411", reader.pid()},
                                             {"24502", positions.pid()},
                                             {"19377", stale.pid()}};

    std::string const programs = root.path() + ".bin";
    std::filesystem::create_directory(programs);
    std::filesystem::create_symlink(QUASK_UNDER_TEST, programs + "/quask");
    std::filesystem::create_symlink(QUASK_STAT_UNDER_TEST, programs + "/quask-stat");

    std::ifstream file(README);
    std::string const text{std::istreambuf_iterator<char>(file), {}};
    std::size_t const start = text.find("\n## At three in the morning\n");
    ASSERT_NE(start, text.npos);
    std::string const section = text.substr(start, text.find("\n## ", start + 1) - start);
    std::regex const block("```console\n\\$ (.*)\n([^`]*)```");
    int count = 0;
    for (std::sregex_iterator found(section.begin(), section.end(), block), none; found != none;
         ++found, ++count) {
        std::string expected = (*found)[2];
        for (auto const& [number, pid] : shown) {
            expected = std::regex_replace(expected, std::regex(number), std::to_string(pid));
        }
        Command command = this->command({});
        command.words = {"bash", "-c", (*found)[1]};
        command.environment["PATH"] = programs + ":" + std::getenv("PATH");
        EXPECT_EQ(squeezed(QuaskTesting::run(command).out), squeezed(expected)) << (*found)[1];
    }
    EXPECT_EQ(count, 7);
    std::filesystem::remove_all(programs);
}

}  // namespace
