#include "stat/histogram.h"

#include <gtest/gtest.h>

namespace {

using Quask::Stat::histogramText;

TEST(Histogram, OfNothingIsEmpty)
{
    EXPECT_EQ(histogramText({}, 40, true), "");
}

TEST(Histogram, HasALineForEachLengthUpToTheLongest)
{
    EXPECT_EQ(histogramText({{0, 100}, {1, 50}, {3, 1}}, 26, false),
              "0 100 ####################\n"
              "1  50 ##########\n"
              "2   0\n"
              "3   1 #\n");
}

TEST(Histogram, DrawsEighthsOfACharacterWhereTheLocaleHasThem)
{
    EXPECT_EQ(histogramText({{0, 16}, {1, 9}, {2, 1}, {3, 8}}, 7, true),
              "0 16 \xe2\x96\x88\xe2\x96\x88\xe2\x96\x88\xe2\x96\x88\xe2\x96\x88\xe2\x96\x88"
              "\xe2\x96\x88\xe2\x96\x88\n"
              "1  9 \xe2\x96\x88\xe2\x96\x88\xe2\x96\x88\xe2\x96\x88\xe2\x96\x8c\n"
              "2  1 \xe2\x96\x8c\n"
              "3  8 \xe2\x96\x88\xe2\x96\x88\xe2\x96\x88\xe2\x96\x88\n");
}

TEST(Histogram, EverythingThatIsThereShows)
{
    EXPECT_EQ(histogramText({{0, 1000000}, {1, 1}}, 18, true),
              "0 1000000 \xe2\x96\x88\xe2\x96\x88\xe2\x96\x88\xe2\x96\x88\xe2\x96\x88\xe2\x96\x88"
              "\xe2\x96\x88\xe2\x96\x88\n"
              "1       1 \xe2\x96\x8f\n");
}

TEST(Histogram, PutsLongChainsTogetherInRanges)
{
    std::string const text =
        histogramText({{15, 4}, {16, 1}, {31, 1}, {32, 1}, {100, 3}}, 20, false);
    EXPECT_EQ(text.substr(text.find("    15")),
              "    15 4 ###########\n"
              " 16-31 2 #####\n"
              " 32-63 1 ##\n"
              "64-127 3 ########\n");
}

TEST(Histogram, LeavesBarsSomeRoomOnTheNarrowestTerminal)
{
    EXPECT_EQ(histogramText({{0, 8}}, 1, false), "0 8 ########\n");
}

}  // namespace
