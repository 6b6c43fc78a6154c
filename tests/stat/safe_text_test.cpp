#include "stat/safe_text.h"

#include <gtest/gtest.h>

namespace {

using Quask::Stat::asciiJson;
using Quask::Stat::terminalText;
using Quask::Stat::utf8Text;

TEST(TerminalText, LeavesOrdinaryCharactersAsTheyAre)
{
    EXPECT_EQ(terminalText("", true), "");
    EXPECT_EQ(terminalText("feed/eq [1] ~", true), "feed/eq [1] ~");
    EXPECT_EQ(terminalText("\xc3\xb6 \xe2\x82\xac \xf0\x9f\x8d\x8f", true),
              "\xc3\xb6 \xe2\x82\xac \xf0\x9f\x8d\x8f");
}

TEST(TerminalText, ShowsControlCharactersByTheirBytes)
{
    EXPECT_EQ(terminalText("a\x1b[31mb\nc\td\x7f", true), "a\\x1b[31mb\\x0ac\\x09d\\x7f");
    EXPECT_EQ(terminalText("\xc2\x9b[m", true), "\\xc2\\x9b[m") << "a control character, too";
    EXPECT_EQ(terminalText(std::string("a\0b", 3), true), "a\\x00b");
}

TEST(TerminalText, ShowsCharactersThatTurnTheTextRoundOrAreNotVisibleByTheirBytes)
{
    EXPECT_EQ(terminalText("a\xe2\x80\xae.", true), "a\\xe2\\x80\\xae.");
    EXPECT_EQ(terminalText("\xe2\x80\x8b.\xef\xbb\xbf", true), "\\xe2\\x80\\x8b.\\xef\\xbb\\xbf");
    EXPECT_EQ(terminalText("\xf3\xa0\x81\x81", true), "\\xf3\\xa0\\x81\\x81") << "a tag";
}

TEST(TerminalText, ShowsWhatIsNotUtf8ByItsBytes)
{
    EXPECT_EQ(terminalText("\xff.", true), "\\xff.");
    EXPECT_EQ(terminalText("\xc3", true), "\\xc3") << "cut off";
    EXPECT_EQ(terminalText("\xc3(", true), "\\xc3(") << "broken off";
    EXPECT_EQ(terminalText("\xc0\xaf", true), "\\xc0\\xaf") << "longer than need be";
    EXPECT_EQ(terminalText("\xe0\x9f\xbf", true), "\\xe0\\x9f\\xbf") << "the same";
    EXPECT_EQ(terminalText("\xf0\x8f\xbf\xbf", true), "\\xf0\\x8f\\xbf\\xbf") << "the same";
    EXPECT_EQ(terminalText("\xed\xa0\x80", true), "\\xed\\xa0\\x80") << "half a pair of UTF-16";
    EXPECT_EQ(terminalText("\xf4\x90\x80\x80", true), "\\xf4\\x90\\x80\\x80") << "past the last";
}

TEST(TerminalText, ShowsWhatIsNotAsciiByItsBytesWhereTheLocaleIsNotUtf8)
{
    EXPECT_EQ(terminalText("\xc3\xb6", false), "\\xc3\\xb6");
}

TEST(TerminalText, DoublesBackslashesSoThatNothingCanPassForAnother)
{
    EXPECT_EQ(terminalText("\\x1b", true), "\\\\x1b");
}

TEST(Utf8Text, ReplacesOnlyWhatIsNotUtf8)
{
    EXPECT_EQ(utf8Text("a\x1b\n\xc3\xb6"), "a\x1b\n\xc3\xb6");
    EXPECT_EQ(utf8Text("a\xff\xc3."), "a\xef\xbf\xbd\xef\xbf\xbd.");
}

TEST(AsciiJson, HasNothingThatATerminalActsOn)
{
    EXPECT_EQ(asciiJson("{\n\"name\": \"a\\u001b[m\"\n}\n"), "{\n\"name\": \"a\\u001b[m\"\n}\n");
    EXPECT_EQ(asciiJson("\"~\x7f\xc2\x80\xc2\x9b\xe2\x82\xac\""), R"("~\u007f\u0080\u009b\u20ac")");
    EXPECT_EQ(asciiJson("\"\xef\xbf\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbf\""),
              R"("\uffff\ud800\udc00\udbff\udfff")");
}

}  // namespace
