#include <gtest/gtest.h>

#include <random>

#include "support/private_root.h"
#include "support/table_checks.h"
#include "support/table_writer.h"

namespace {

using namespace QuaskTesting;

// Inserts, updates and removes at random, and checks the files against plain vectors now and then.
class WriterOfAnySize : public testing::TestWithParam<std::uint32_t>
{};

TEST_P(WriterOfAnySize, KeepsAllListsWhateverIsDone)
{
    struct Element
    {
        std::uint32_t slot;
        std::string value;
    };
    PrivateRoot const root;
    TableShape shape;
    shape.valueSize = GetParam();
    shape.buckets = 5;
    shape.slots = 0;
    shape.maxSlots = 40;
    TableWriter writer(root.path() + "/eq", shape);
    std::vector<std::vector<Element>> model(5);
    std::size_t elements = 0;
    std::mt19937 random(GetParam());
    auto const below = [&](std::size_t bound) { return random() % bound; };

    for (int round = 1; round <= 3000; ++round) {
        auto const bucket = static_cast<std::uint32_t>(below(5));
        std::vector<Element>& chain = model[bucket];
        std::string value(shape.valueSize, static_cast<char>(below(256)));
        bool const more = round / 300 % 2 == 0 ? below(4) != 0 : below(4) == 0;
        if (below(3) == 0 && !chain.empty()) {
            Element& element = chain[below(chain.size())];
            writer.update(element.slot, value);
            element.value = value;
        } else if (more && elements < 40) {
            chain.insert(chain.begin(), {writer.insert(bucket, value), value});
            ++elements;
        } else if (!chain.empty()) {
            auto const element = chain.begin() + static_cast<std::ptrdiff_t>(below(chain.size()));
            writer.remove(bucket, element->slot);
            chain.erase(element);
            --elements;
        }
        if (round % 50 != 0) {
            continue;
        }
        TableImage const table = TableImage::load(root.path() + "/eq");
        expectSoundLists(table);
        std::vector<std::vector<std::string>> expected;
        for (auto const& expectedChain : model) {
            expected.emplace_back();
            for (Element const& element : expectedChain) {
                expected.back().push_back(element.value);
            }
        }
        ASSERT_EQ(shownValues(table), expected) << "after " << round << " operations";
    }
    EXPECT_EQ(writer.slots(), 40u);
}

INSTANTIATE_TEST_SUITE_P(ValueSizes, WriterOfAnySize,
                         testing::Values(0u, 1u, 7u, 8u, 12u, 15u, 16u, 100u),
                         testing::PrintToStringParamName());

}  // namespace
