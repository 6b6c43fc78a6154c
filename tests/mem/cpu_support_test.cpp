#include <gtest/gtest.h>

#include "mem/atomics.h"

namespace {

TEST(CheckCpuSupport, FindsTheLoadsOnEveryProcessorThatTheTestsAreBuiltFor)
{
    EXPECT_TRUE(Mem::Atomics::checkCpuSupport());
}

}  // namespace
