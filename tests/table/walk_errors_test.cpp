#include "table/walk_errors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/exception.h"
#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;
using Quask::CorruptionDetectedException;
using testing::ElementsAre;

class WalkErrorsTest : public WalkFixture
{
protected:
    // What is thrown; what is logged is in `debug`.
    template <typename Throwing>
    std::string thrownBy(Throwing&& throwing)
    {
        debug.lines.clear();
        try {
            throwing();
        } catch (CorruptionDetectedException const& exception) {
            return exception.what();
        }
        return "nothing";
    }
};

TEST_F(WalkErrorsTest, AnIndexOutOfRangeIsWrappedTwice)
{
    image.buckets(1).slots(4);
    open();
    std::string const once =
        "Quask::CorruptionDetectedException(\"SlotReaderGenericTable::getSlot out-of-range index: "
        "4 max:3\")";
    std::string const twice = "Quask::CorruptionDetectedException(\"" + once + "\")";
    EXPECT_EQ(thrownBy([this] { Quask::throwOutsideSlots(debug, *slots, 4); }), twice);
    EXPECT_THAT(
        debug.lines,
        ElementsAre("0 SlotReaderGenericTable::getSlot out-of-range index: 4 max:3", "0 " + twice));
}

TEST_F(WalkErrorsTest, ASlotOutsideTheMappingIsWrappedTwiceInItsOwnWords)
{
    image = TableImage::of("char[1000]", 1000).buckets(1);
    image.slotsHeader.mappedCount = 4;
    image.resize(TableFile::slots, 4000);
    open();
    std::string const text =
        "SlotReaderGenericTable::getSlot outside the mapped file index: 3 offset:4240 mapped:4096";
    std::string const twice =
        "Quask::CorruptionDetectedException(\"Quask::CorruptionDetectedException(\"" + text +
        "\")\")";
    EXPECT_EQ(thrownBy([this] { Quask::throwOutsideSlots(debug, *slots, 3); }), twice);
    EXPECT_THAT(debug.lines, ElementsAre("0 " + text, "0 " + twice));
}

TEST_F(WalkErrorsTest, ACircleIsReportedWithItsBucketAndSlot)
{
    std::string const text = "QuaskReaderGeneric::scan() chain of bucket:31 comes back to slot:10";
    EXPECT_EQ(thrownBy([this] { Quask::throwCycle(debug, 31, 10); }), text);
    EXPECT_THAT(debug.lines, ElementsAre("0 " + text));
}

}  // namespace
