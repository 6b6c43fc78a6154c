#include "table/header_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ios>

#include "support/recording_handler.h"

namespace {

using Quask::failCheck;
using QuaskTesting::RecordingHandler;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(FailCheck, ReplacesTheErrorAndLogsTheSameText)
{
    RecordingHandler handler;
    std::string error = "of an earlier check";
    EXPECT_FALSE(failCheck(handler, error, "bad size: ", 10, " hex:", std::hex, 10, " ", 255));
    EXPECT_EQ(error, "bad size: 10 hex:a ff");
    EXPECT_THAT(handler.lines, ElementsAre("0 bad size: 10 hex:a ff"));
}

TEST(FailCheck, GivesTheErrorEvenWhenNothingIsLogged)
{
    RecordingHandler quiet(-1);
    std::string error;
    EXPECT_FALSE(failCheck(quiet, error, "bad version: ", 2));
    EXPECT_EQ(error, "bad version: 2");
    EXPECT_THAT(quiet.lines, IsEmpty());
}

}  // namespace
