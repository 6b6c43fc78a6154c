#include "report/large_value_lines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>

#include "report/quask_textify.h"

namespace {

using Quask::LargeValueLines;
using Quask::QuaskTextify;
using Quask::ScanHandler;
using Quask::SlotRef;

constexpr unsigned valueSize = 100000;
constexpr SlotRef end{0, SlotRef::null};

// The lines of small values, which large ones are to equal.
class Lines final : public QuaskTextify
{
public:
    Lines(Style chosenStyle, Dovan::Platform::ValuePrinter const* printer, bool showEmpty)
        : QuaskTextify(std::make_unique<unsigned char[]>(valueSize), valueSize, chosenStyle,
                       printer, "type", showEmpty)
    {}

    bool handleLineString(unsigned /*bucket*/, std::string_view line) override
    {
        text += line;
        return true;
    }

    std::string text;
};

// A handler of large values and what it prints.
struct LargeLines
{
    explicit LargeLines(Dovan::Platform::ValuePrinter const* printer, bool showEmpty = false)
        : handler(Dovan::allocateZeroed(valueSize), valueSize, *printer, showEmpty, out, reader)
    {}

    std::ostringstream out;
    Quask::QuaskReaderGeneric const reader{"nowhere"};
    LargeValueLines handler;
};

// One element, as the walk gives it: its value's bytes are `letter`s.
void element(ScanHandler& handler, unsigned bucket, std::uint32_t slot, char letter,
             bool lookaside = false)
{
    std::memset(handler.data, letter, handler.size);
    EXPECT_TRUE(handler.handleSlot(bucket, {7, slot}, handler.data, handler.size, lookaside, 12));
}

void walkSomeChains(ScanHandler& handler)
{
    element(handler, 0, 3, 'a');
    EXPECT_TRUE(handler.done(0, end));
    EXPECT_TRUE(handler.done(1, end));
    element(handler, 0x1f, 10, 'b');
    element(handler, 0x1f, 0xabcdef, 'c', true);
    element(handler, 0x1f, 0, 'd');
    EXPECT_TRUE(handler.done(0x1f, end));
    element(handler, 0x20, 1, 'e');
    element(handler, 0x20, 2, 'f');
    EXPECT_TRUE(handler.restart(0x20));
    element(handler, 0x20, 4, 'g');
    EXPECT_TRUE(handler.done(0x20, end));
    EXPECT_TRUE(handler.restart(0x21));
    EXPECT_TRUE(handler.done(0x21, end));
}

TEST(LargeValueLines, AreThoseOfQuaskTextify)
{
    for (std::string const type : {"", "char[100000]", "int16_t[50000]"}) {
        for (bool const showEmpty : {false, true}) {
            auto const* const printer = Dovan::Platform::getValuePrinter(type, valueSize);
            Lines expected(QuaskTextify::Pretty, printer, showEmpty);
            walkSomeChains(expected);
            LargeLines shown(printer, showEmpty);
            walkSomeChains(shown.handler);
            EXPECT_TRUE(shown.out.str() == expected.text) << type << showEmpty;
            EXPECT_EQ(std::count(expected.text.begin(), expected.text.end(), '\n'),
                      showEmpty ? 5 : 3);
        }
    }
}

TEST(LargeValueLines, OfATypeWithoutANameAreThoseInHexadecimal)
{
    auto const* const printer = Dovan::Platform::getValuePrinter("", valueSize);
    Lines expected(QuaskTextify::Plain, printer, false);
    walkSomeChains(expected);
    LargeLines shown(printer);
    walkSomeChains(shown.handler);
    EXPECT_TRUE(shown.out.str() == expected.text);
}

TEST(LargeValueLines, PrintNothingBeforeTheChainHasEnded)
{
    LargeLines shown(Dovan::Platform::getValuePrinter("char[100000]", valueSize));
    element(shown.handler, 0, 3, 'a');
    element(shown.handler, 0, 4, 'a');
    EXPECT_EQ(shown.out.str(), "");
    shown.handler.done(0, end);
    EXPECT_EQ(shown.out.str().substr(0, 18), "bucket[0] 3-->\"aaa");
}

// What a value that is shorter than its buffer does not fill; a damaged header makes such ones.
TEST(LargeValueLines, ABufferBeginsWithZeros)
{
    LargeLines shown(Dovan::Platform::getValuePrinter("char[100000]", valueSize));
    for (std::uint32_t slot = 0; slot < 3; ++slot) {
        std::memcpy(shown.handler.data, "ab", 2);
        shown.handler.handleSlot(0, {0, slot}, shown.handler.data, valueSize, false, 0);
    }
    shown.handler.done(0, end);
    EXPECT_EQ(shown.out.str(), "bucket[0] 0-->\"ab\" 1-->\"ab\" 2-->\"ab\" ffffffff --> none\n");
}

}  // namespace
