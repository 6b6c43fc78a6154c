// Jobs whose output file cannot be opened. The command line gives such a file only to the report on
// all tables.

#include "json/jobs.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string errorOfSingleTableJob(Quask::Options options)
{
    options.outputFile = "/nonexistent/out";
    testing::internal::CaptureStderr();
    EXPECT_EQ(Quask::Json::runSingleTableJob(options, "eq"), 1);
    return testing::internal::GetCapturedStderr();
}

TEST(JsonSingleTableJob, NamesTheScannersAsQuaskDoes)
{
    Quask::Options options;
    EXPECT_EQ(errorOfSingleTableJob(options),
              "Error opening /nonexistent/out\nFailed to initialize QuaskHeaderScanner.\n");
    options.showHeaders = true;
    EXPECT_EQ(errorOfSingleTableJob(options),
              "Error opening /nonexistent/out\nFailed to initialize QuaskHeaderScanner.\n");
    options.showWho = true;
    EXPECT_EQ(errorOfSingleTableJob(options),
              "Error opening /nonexistent/out\nFailed to initialize QuaskClientScanner.\n");
}

}  // namespace
