#include "base/exception.h"

#include <gtest/gtest.h>

namespace {

TEST(Exception, MsgIsTheNameAndTheQuotedMessage)
{
    EXPECT_EQ(Dovan::RuntimeException("x", true).msg(), "Dovan::RuntimeException(\"x\")");
    EXPECT_EQ(Dovan::Exception("", true).msg(), "Dovan::Exception(\"\")");
    EXPECT_EQ(Dovan::MemoryResourceException("m", true).msg(),
              "Dovan::MemoryResourceException(\"m\")");
    EXPECT_EQ(Quask::CorruptionDetectedException("M", true).msg(),
              "Quask::CorruptionDetectedException(\"M\")");
}

TEST(Exception, WhatIsTheMessageAlone)
{
    Quask::CorruptionDetectedException const exception("index:7 max:3", true);
    EXPECT_STREQ(exception.what(), "index:7 max:3");
}

TEST(Exception, IsCaughtAsTheFamilyAndKeepsItsName)
{
    try {
        throw Quask::CorruptionDetectedException("torn", true);
    } catch (Dovan::Exception const& exception) {
        EXPECT_STREQ(exception.name(), "Quask::CorruptionDetectedException");
    }
}

}  // namespace
