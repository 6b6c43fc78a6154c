#include "clients/shared_text.h"

#include <gtest/gtest.h>

namespace {

using Quask::Model::SharedText;

TEST(SharedText, IsEmptyUnlessATextIsGiven)
{
    EXPECT_EQ(SharedText().text(), "");
    EXPECT_EQ(SharedText("").text(), "");
    EXPECT_EQ(SharedText("feeder").text(), "feeder");
    EXPECT_EQ(SharedText(std::string("a\0b", 3)).text(), std::string_view("a\0b", 3));
}

TEST(SharedText, ItsCopiesHaveTheSameBytes)
{
    SharedText copy;
    char const* bytes = nullptr;
    {
        SharedText const text("feeder");
        bytes = text.text().data();
        copy = text;
    }
    EXPECT_EQ(copy.text().data(), bytes);
    EXPECT_EQ(copy.text(), "feeder");
}

TEST(SharedText, ComparesByItsBytesWhetherSharedOrNot)
{
    SharedText const text("feeder");
    SharedText const copy = text;
    EXPECT_TRUE(text == copy);
    EXPECT_TRUE(text == SharedText("feeder"));
    EXPECT_TRUE(SharedText() == SharedText(""));
    EXPECT_FALSE(text == SharedText("feed"));
    EXPECT_TRUE((text <=> copy) == 0);
    EXPECT_TRUE((text <=> SharedText("feeder")) == 0);
    EXPECT_TRUE((SharedText("feed") <=> text) < 0) << "a prefix comes first";
    EXPECT_TRUE((SharedText("\xc3\xa4") <=> text) > 0) << "bytes are unsigned";
    EXPECT_TRUE((SharedText() <=> text) < 0);
}

}  // namespace
