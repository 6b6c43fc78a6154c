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

TEST(TextBuffer, IsBuiltInMemoryOfSomebodyElses)
{
    char memory[8];
    Dovan::TextBuffer text;
    text.append("dropped");
    text.useMemory(memory, sizeof memory);
    EXPECT_TRUE(text.empty());
    text.append("12345678");
    EXPECT_EQ(text.view().data(), memory);
    EXPECT_EQ(text.view(), "12345678");
}

TEST(TextBuffer, MovesToItsOwnMemoryWhenThatDoesNotSuffice)
{
    char memory[8];
    Dovan::TextBuffer text;
    for (char const letter : {'a', 'b', 'c'}) {
        text.useMemory(memory, sizeof memory);
        std::string const inMemory(7, letter);
        text.append(inMemory);
        text.append("89");
        EXPECT_EQ(text.view(), inMemory + "89");
        text.append(std::string(10000, 'x'));
        EXPECT_EQ(text.view(), inMemory + "89" + std::string(10000, 'x'));
        EXPECT_EQ(std::string_view(memory, 7), inMemory);
    }
}

TEST(TextBuffer, WhatWasWrittenStaysWhenMoreRoomIsReserved)
{
    Dovan::TextBuffer buffer;
    char* out = buffer.reserve(1);
    for (int i = 0; i < 1000; ++i) {
        *out++ = static_cast<char>('a' + i % 26);
        out = buffer.reserveFrom(out, 1);
    }
    ASSERT_EQ(buffer.size(), 1000u);
    EXPECT_EQ(buffer.view().substr(0, 26), "abcdefghijklmnopqrstuvwxyz");
    EXPECT_EQ(buffer.view().back(), static_cast<char>('a' + 999 % 26));
}

}  // namespace
