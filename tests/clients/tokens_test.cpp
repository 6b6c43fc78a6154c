#include "clients/tokens.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Quask::afterLastSlash;
using Quask::nthToken;

TEST(NthToken, RunsOfDelimitersSeparateAndLeadingOnesAreSkipped)
{
    EXPECT_EQ(nthToken("a  b", 2, " "), "b");
    EXPECT_EQ(nthToken("  a b", 1, " "), "a");
    EXPECT_EQ(nthToken("/proc/4711/maps", 2, "/"), "4711");
    EXPECT_EQ(nthToken("a, b;c", 3, " ,;"), "c");
}

TEST(NthToken, IsEmptyBeyondTheLastAndForIndexZero)
{
    EXPECT_EQ(nthToken("a b", 3, " "), "");
    EXPECT_EQ(nthToken("a b  ", 3, " "), "");
    EXPECT_EQ(nthToken("a b", 0, " "), "");
    EXPECT_EQ(nthToken("a b", 4294967295u, " "), "");
    EXPECT_EQ(nthToken("", 1, " "), "");
    EXPECT_EQ(nthToken("   ", 1, " "), "");
}

TEST(NthToken, WithoutDelimitersTheTextIsOneToken)
{
    EXPECT_EQ(nthToken(" a b ", 1, ""), " a b ");
    EXPECT_EQ(nthToken(" a b ", 2, ""), "");
}

TEST(NthToken, ANulIsACharacterLikeAnyOther)
{
    EXPECT_EQ(nthToken(std::string_view("a\0b c", 5), 1, " "), std::string_view("a\0b", 3));
    EXPECT_EQ(nthToken(std::string_view("a\0b c", 5), 2, std::string_view(" \0", 2)), "b");
}

TEST(BehindLastSlash, IsAllOfATextThatHasNone)
{
    EXPECT_EQ(afterLastSlash("/usr/bin/feeder"), "feeder");
    EXPECT_EQ(afterLastSlash("feeder"), "feeder");
    EXPECT_EQ(afterLastSlash("/usr/bin/"), "");
    EXPECT_EQ(afterLastSlash(""), "");
}

}  // namespace
