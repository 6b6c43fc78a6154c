#include "mem/ver_u32.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using Mem::VerU32;

std::string textOf(VerU32 const& pair)
{
    std::ostringstream out;
    out << pair;
    return out.str();
}

TEST(VerU32, ItsTextIsTheVersionInHexadecimalAndTheValueInDecimal)
{
    EXPECT_EQ(textOf({6699, 7}), "1a2b:7");
    EXPECT_EQ(textOf({0, 0}), "0:0");
    EXPECT_EQ(textOf({0xffffffff, 0xffffffff}), "ffffffff:4294967295");
}

TEST(VerU32, LeavesTheStreamInDecimal)
{
    std::ostringstream out;
    out << std::hex << VerU32{10, 10} << " " << 10;
    EXPECT_EQ(out.str(), "a:10 10");
}

TEST(VerU32, TheVersionIsTheLowHalfOfAWord)
{
    constexpr VerU32 pair = Mem::verU32(0x0000000700001a2b);
    EXPECT_EQ(pair.version, 0x1a2bu);
    EXPECT_EQ(pair.value, 7u);
}

}  // namespace
