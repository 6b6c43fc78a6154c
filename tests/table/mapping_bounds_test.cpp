// Walks over tables whose files fill their pages, with nothing to be read before and after them: a
// load outside a mapping ends the process. It would show nowhere else where it only looks ahead.

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>

#include "base/exception.h"
#include "support/guard_pages.h"
#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;

class MappingBoundsTest : public WalkFixture
{
protected:
    // As WalkFixture does, with guard pages around each file.
    void openGuarded()
    {
        image.writeTo(root, "eq");
        std::string error;
        Quask::ValueFormat format;
        aroundBuckets_.emplace(
            image.bucketsFile().size(), [this] { buckets.reset(); },
            [this]() -> void const* {
                buckets.emplace(debug, rootPath);
                return buckets->attach() ? &buckets->liveHeader() : nullptr;
            });
        aroundSlots_.emplace(
            image.slotsFile().size(), [this] { slots.reset(); },
            [this]() -> void const* {
                slots.emplace(debug, rootPath, statistics);
                return slots->attach() ? &slots->liveHeader() : nullptr;
            });
        ASSERT_TRUE(buckets->validate(error)) << error;
        ASSERT_TRUE(slots->validate(error, format)) << error;
    }

    // So many buckets or slots fill one page, or two.
    static constexpr std::uint32_t bucketsOfAPage = (4096 - BucketsOffset::link(0)) / 8;
    static constexpr std::uint32_t slotsOfTwoPages = (8192 - SlotsOffset::lookaside) / 24 - 1;
    static_assert(BucketsOffset::link(bucketsOfAPage) == 4096);
    static_assert(SlotsOffset::slot(24, slotsOfTwoPages) == 8192);

private:
    std::optional<GuardPages> aroundBuckets_;
    std::optional<GuardPages> aroundSlots_;
};

using MappingBoundsDeathTest = MappingBoundsTest;

TEST_F(MappingBoundsDeathTest, ALoadOutsideAMappingEndsTheProcess)
{
    image.buckets(bucketsOfAPage).slots(slotsOfTwoPages);
    openGuarded();
    auto const byteOf = [](void const* file, std::ptrdiff_t offset) {
        return static_cast<char const volatile*>(file)[offset];
    };
    for (void const* const file : {static_cast<void const*>(&buckets->liveHeader()),
                                   static_cast<void const*>(&slots->liveHeader())}) {
        EXPECT_DEATH(byteOf(file, -1), "");
    }
    EXPECT_DEATH(byteOf(&buckets->liveHeader(), 4096), "");
    EXPECT_DEATH(byteOf(&slots->liveHeader(), 8192), "");
}

TEST_F(MappingBoundsTest, NothingIsReadAfterTheLastBucket)
{
    image.buckets(bucketsOfAPage).slots(slotsOfTwoPages);
    openGuarded();
    walk();
    EXPECT_EQ(handler.lines.size(), bucketsOfAPage);
}

// What looks ahead begins with the fifth batch of 64 buckets: the last slots belong to later ones.
TEST_F(MappingBoundsTest, NothingIsReadAfterTheLastSlot)
{
    image.buckets(500).slots(slotsOfTwoPages);
    for (std::uint32_t i = 0; i < 200; ++i) {
        image.chain(300 + i, {{slotsOfTwoPages - 1 - i, "1234"}});
    }
    openGuarded();
    walk();
    EXPECT_EQ(handler.lines.size(), 700u);
}

// The walk comes to the link late; what looks ahead, early.
TEST_F(MappingBoundsTest, ALinkToTheSlotAfterTheLastIsNotFollowed)
{
    image.buckets(400).slots(slotsOfTwoPages);
    image.bucketLinks[300].value = slotsOfTwoPages;
    openGuarded();
    EXPECT_THROW(walk(), Quask::CorruptionDetectedException);
    EXPECT_EQ(handler.lines.size(), 300u);
}

}  // namespace
