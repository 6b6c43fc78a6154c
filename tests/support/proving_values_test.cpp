#include "support/proving_values.h"

#include <gtest/gtest.h>

namespace {

using namespace QuaskTesting;

class ProvingValue : public testing::TestWithParam<std::size_t>
{};

TEST_P(ProvingValue, SaysWhichElementAndWhichChangeOfIt)
{
    std::string const value = provingValue(GetParam(), stableKey(77), 12345);
    EXPECT_EQ(value.size(), GetParam());
    EXPECT_EQ(provenBy(value), (Proven{stableKey(77), 12345}));
}

TEST_P(ProvingValue, IsNotWholeWithAWordOfAnother)
{
    std::size_t const size = GetParam();
    for (std::size_t i = 0; size >= 16 && i + 8 <= size; i += 8) {
        for (auto const& [key, generation] : {Proven{7, 2}, Proven{8, 1}}) {
            std::string value = provingValue(size, 7, 1);
            value.replace(i, 8, provingValue(size, key, generation), i, 8);
            EXPECT_EQ(provenBy(value), std::nullopt) << "offset " << i;
        }
    }
}

TEST_P(ProvingValue, IsNotWholeWithAnotherByte)
{
    for (std::size_t i = 0; i < GetParam(); ++i) {
        std::string value = provingValue(GetParam(), 7, 1);
        value[i] = static_cast<char>(value[i] ^ 0x10);
        EXPECT_EQ(provenBy(value), std::nullopt) << "offset " << i;
    }
}

TEST_P(ProvingValue, ZerosAreNotAValue)
{
    EXPECT_EQ(provenBy(std::string(GetParam(), '\0')), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Sizes, ProvingValue, testing::Values(8, 12, 15, 16, 24, 29, 200),
                         testing::PrintToStringParamName());

TEST(ProvingValue, IsNothingBelowEightBytes)
{
    EXPECT_EQ(provenBy(std::string(7, '\0')), std::nullopt);
    EXPECT_EQ(provenBy(std::string()), std::nullopt);
}

TEST(ProvingValue, AShortOneCountsItsChangesModuloTwentyFourBits)
{
    EXPECT_EQ(provenBy(provingValue(8, 7, 0xff000001)), (Proven{7, 1}));
    EXPECT_EQ(provenBy(provingValue(16, 7, 0xff000001)), (Proven{7, 0xff000001}));
}

TEST(ProvingKey, DistinguishesStableElementsFromHotOnesInTheSameBuckets)
{
    EXPECT_TRUE(isStableKey(stableKey(21)));
    EXPECT_FALSE(isStableKey(hotKey(21)));
    EXPECT_EQ(bucketOfKey(stableKey(21), 16), 5u);
    EXPECT_EQ(bucketOfKey(hotKey(21), 16), 5u);
}

}  // namespace
