#include "base/text_buffer.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(TextBuffer, CollectsPiecesUntilItIsCleared)
{
    Dovan::TextBuffer text;
    EXPECT_TRUE(text.empty());
    text.append("bucket[");
    text.append('7');
    EXPECT_EQ(text.view(), "bucket[7");
    text.clear();
    EXPECT_EQ(text.view(), "");
    text.append("x");
    EXPECT_EQ(text.view(), "x");
}

TEST(TextBuffer, GrowsAndKeepsWhatItHolds)
{
    Dovan::TextBuffer text;
    std::string expected;
    for (int i = 0; i < 20000; ++i) {
        text.append("piece ");
        expected += "piece ";
    }
    text.append(std::string(100000, 'y'));
    EXPECT_EQ(text.view(), expected + std::string(100000, 'y'));
}

TEST(TextBuffer, TakesOnlyWhatWasWrittenOfTheRoomItGave)
{
    Dovan::TextBuffer text;
    char* const end = text.reserve(100);
    end[0] = 'a';
    end[1] = 'b';
    EXPECT_TRUE(text.empty());
    text.advanceTo(end + 1);
    EXPECT_EQ(text.view(), "a");
}

}  // namespace
