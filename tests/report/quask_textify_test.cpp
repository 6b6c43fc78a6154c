#include "report/quask_textify.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Quask::QuaskTextify;
using Quask::SlotRef;
using testing::ElementsAre;
using testing::IsEmpty;

// Shows a value as its bytes' characters in angle brackets.
class BracketPrinter final : public Dovan::Platform::ValuePrinter
{
public:
    std::string print(void const* value) const override
    {
        return "<" + std::string(static_cast<char const*>(value)) + ">";
    }
    void append(Dovan::TextBuffer& out, void const* value) const override
    {
        out.append(print(value));
    }
};

class ThrowingPrinter final : public Dovan::Platform::ValuePrinter
{
public:
    std::string print(void const*) const override { throw std::runtime_error("of the printer"); }
    void append(Dovan::TextBuffer&, void const* value) const override { print(value); }
};

struct Settings
{
    unsigned valueSize = 8;
    int style = QuaskTextify::Plain;
    bool printEmpty = false;
    Dovan::Platform::ValuePrinter const* printer = nullptr;
};

// Collects the lines.
class Lines final : public QuaskTextify
{
public:
    explicit Lines(Settings const& settings)
        : QuaskTextify(std::make_unique<unsigned char[]>(settings.valueSize), settings.valueSize,
                       static_cast<Style>(settings.style), settings.printer, "type",
                       settings.printEmpty)
    {}

    bool handleLineString(unsigned bucket, std::string_view line) override
    {
        if (throws) {
            throw std::runtime_error("of the line's receiver");
        }
        lines.emplace_back(line);
        buckets.push_back(bucket);
        return answer;
    }

    void setVerbose() { verbose = true; }

    // One element whose value begins with these bytes.
    bool element(unsigned bucket, SlotRef const& ref, std::string const& value,
                 bool lookaside = false, unsigned sequence = 0)
    {
        std::memset(data, 0, size);
        std::memcpy(data, value.data(), value.size());
        return handleSlot(bucket, ref, data, size, lookaside, sequence);
    }

    std::vector<std::string> lines;
    std::vector<unsigned> buckets;
    bool answer = true;
    bool throws = false;
};

constexpr SlotRef end{0, SlotRef::null};

TEST(QuaskTextify, AChainIsOneLine)
{
    Lines text({});
    EXPECT_TRUE(text.element(31, {0, 3}, "\x2a"));
    EXPECT_TRUE(text.element(31, {0, 7}, "\x2b", true));
    EXPECT_THAT(text.lines, IsEmpty());
    EXPECT_TRUE(text.done(31, end));
    EXPECT_THAT(text.lines, ElementsAre("bucket[1f] 3-->2a000000 00000000 7-->*2b000000 00000000 "
                                        "ffffffff --> none\n"));
    EXPECT_THAT(text.buckets, ElementsAre(31u));
}

TEST(QuaskTextify, BucketsAndIndexesAreInHexadecimalWithoutPadding)
{
    Lines text({.valueSize = 1});
    text.element(255, {0, 10}, "a");
    text.done(255, end);
    text.element(0, {0, 0}, "a");
    text.done(0, end);
    text.element(0xffffffff, {0, 0xfffffffe}, "a");
    text.done(0xffffffff, end);
    EXPECT_THAT(text.lines, ElementsAre("bucket[ff] a-->61 ffffffff --> none\n",
                                        "bucket[0] 0-->61 ffffffff --> none\n",
                                        "bucket[ffffffff] fffffffe-->61 ffffffff --> none\n"));
}

TEST(QuaskTextify, AnEmptyBucketWritesNothingAndTheWalkGoesOn)
{
    Lines text({});
    text.answer = false;
    EXPECT_TRUE(text.done(31, end));
    EXPECT_THAT(text.lines, IsEmpty());
}

TEST(QuaskTextify, AnEmptyBucketIsALineWithoutElementsWhenAskedFor)
{
    Lines text({.printEmpty = true});
    EXPECT_TRUE(text.done(31, end));
    EXPECT_THAT(text.lines, ElementsAre("bucket[1f] ffffffff --> none\n"));
}

TEST(QuaskTextify, AValueWithoutBytesLeavesNothingAfterTheArrow)
{
    Lines text({.valueSize = 0});
    text.element(0, {0, 1}, "");
    text.element(0, {0, 2}, "", true);
    text.done(0, end);
    EXPECT_THAT(text.lines, ElementsAre("bucket[0] 1--> 2-->* ffffffff --> none\n"));
}

TEST(QuaskTextify, VoskAndPrettyAreThePrintersText)
{
    BracketPrinter const printer;
    for (int const style : {QuaskTextify::Vosk, QuaskTextify::Pretty}) {
        Lines text({.style = style, .printer = &printer});
        text.element(1, {0, 2}, "abc");
        text.element(1, {0, 3}, "", true);
        text.done(1, end);
        EXPECT_THAT(text.lines, ElementsAre("bucket[1] 2--><abc> 3-->*<> ffffffff --> none\n"));
    }
}

TEST(QuaskTextify, EveryOtherStyleIsPlain)
{
    BracketPrinter const printer;
    for (int const style : {0, 3, 7, -1}) {
        Lines text({.valueSize = 2, .style = style, .printer = &printer});
        text.element(1, {0, 2}, "ab");
        text.done(1, end);
        EXPECT_THAT(text.lines, ElementsAre("bucket[1] 2-->6162 ffffffff --> none\n"));
    }
}

TEST(QuaskTextify, ARestartThrowsAwayWhatWasRead)
{
    Lines text({.valueSize = 1});
    text.element(5, {0, 1}, "a");
    text.element(5, {0, 2}, "b");
    EXPECT_TRUE(text.restart(5));
    text.element(5, {0, 3}, "c");
    text.done(5, end);
    EXPECT_THAT(text.lines, ElementsAre("bucket[5] 3-->63 ffffffff --> none\n"));
}

TEST(QuaskTextify, AChainThatIsEmptyAfterARestartIsAnEmptyBucket)
{
    Lines text({.valueSize = 1});
    text.element(5, {0, 1}, "a");
    text.restart(5);
    EXPECT_TRUE(text.done(5, end));
    EXPECT_THAT(text.lines, IsEmpty());
}

TEST(QuaskTextify, VerboseShowsVersionsAndStateWordsInDecimal)
{
    Lines text({.valueSize = 1});
    text.setVerbose();
    text.element(16, {10, 11}, "a", false, 12);
    text.element(16, {0xffffffff, 0xfffffffe}, "b", true, 0xfffffffd);
    text.done(16, {17, SlotRef::null});
    EXPECT_THAT(text.lines,
                ElementsAre("bucket[10] 10:b-->12:61 4294967295:fffffffe-->4294967293:*62 "
                            "17:ffffffff --> none\n"));
}

TEST(QuaskTextify, VerboseShowsTheVersionOfAnEmptyBucket)
{
    Lines text({.printEmpty = true});
    text.setVerbose();
    text.done(16, {4294967295, SlotRef::null});
    EXPECT_THAT(text.lines, ElementsAre("bucket[10] 4294967295:ffffffff --> none\n"));
}

TEST(QuaskTextify, WhatTheLinesReceiverSaysIsTheResult)
{
    Lines text({.valueSize = 1});
    text.answer = false;
    text.element(1, {0, 1}, "a");
    EXPECT_FALSE(text.done(1, end));
    // The line was thrown away all the same.
    text.answer = true;
    text.element(2, {0, 2}, "b");
    EXPECT_TRUE(text.done(2, end));
    EXPECT_THAT(text.lines, ElementsAre("bucket[1] 1-->61 ffffffff --> none\n",
                                        "bucket[2] 2-->62 ffffffff --> none\n"));
}

TEST(QuaskTextify, WhatIsThrownPassesThrough)
{
    ThrowingPrinter const printer;
    Lines pretty({.style = QuaskTextify::Pretty, .printer = &printer});
    EXPECT_THROW(pretty.element(1, {0, 1}, "a"), std::runtime_error);
    Lines text({});
    text.throws = true;
    text.element(1, {0, 1}, "a");
    EXPECT_THROW(text.done(1, end), std::runtime_error);
}

TEST(QuaskTextify, LongValuesAndLongChainsAreOneLine)
{
    std::string const value(10000, 'x');
    Lines text({.valueSize = 10000});
    std::string expected = "bucket[1]";
    for (unsigned index = 0; index < 100; ++index) {
        text.element(1, {0, 16 + index % 10}, value);
        expected += " 1" + std::string(1, static_cast<char>('0' + index % 10)) + "-->78787878";
        for (unsigned group = 1; group < 2500; ++group) {
            expected += " 78787878";
        }
    }
    text.done(1, end);
    EXPECT_EQ(text.lines.at(0), expected + " ffffffff --> none\n");
}

}  // namespace
