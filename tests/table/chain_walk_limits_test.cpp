// How much a walk takes from a table whose contents are out of all proportion.

#include <gtest/gtest.h>

#include "base/exception.h"
#include "table/walk_fixture.h"

namespace {

using namespace QuaskTesting;

// Counts what a walk hands it, and acts after each element.
class CountingHandler final : public Quask::ScanHandler
{
public:
    explicit CountingHandler(unsigned valueSize) : buffer_(valueSize + 1)
    {
        data = buffer_.data();
        size = valueSize;
    }

    bool done(unsigned, Quask::SlotRef const&) override
    {
        ++chains;
        return true;
    }

    bool handleSlot(unsigned, Quask::SlotRef const& ref, unsigned char*, unsigned, bool,
                    unsigned) override
    {
        ++elements;
        if (afterElement) {
            afterElement(ref.index);
        }
        return true;
    }

    bool restart(unsigned) override
    {
        elementsBeforeRestart.push_back(elements);
        elements = 0;
        return true;
    }

    std::function<void(std::uint32_t slot)> afterElement;
    std::uint64_t chains = 0;
    std::uint64_t elements = 0;  // since the last restart
    std::vector<std::uint64_t> elementsBeforeRestart;

private:
    std::vector<unsigned char> buffer_;
};

class ChainWalkLimitsTest : public WalkFixture
{
protected:
    // A table in which all of `bucketCount` buckets lead to slot 0, its only one.
    void openWithOneChain(std::uint32_t bucketCount, unsigned valueSize)
    {
        image = TableImage::of("std::array<char>", valueSize).buckets(1).chain(0, {{0, ""}});
        image.bucketLinks.assign(bucketCount, image.bucketLinks[0]);
        open();
    }

    // The text of the exception that ends a walk, and what was handed out before in `counted`;
    // empty when the walk comes to its end.
    std::string walkCounting(CountingHandler& counted)
    {
        Quask::ChainWalk<CountingHandler> walk(debug, *buckets, *slots, statistics, restarts,
                                               counted);
        try {
            walk.run(0, 0xffffffff, Quask::Direction::upward, true);
        } catch (Quask::CorruptionDetectedException const& exception) {
            return exception.what();
        }
        return {};
    }
};

// The writer rewrites each link just after the walk has followed it, so that no slot ever comes
// again with the link that it had: the chain has no end, and is not a circle.
TEST_F(ChainWalkLimitsTest, AChainLongerThanAllSlotsTwiceIsWalkedAgain)
{
    constexpr std::uint32_t slotCount = 5000;
    std::vector<TableImage::Element> elements;
    for (std::uint32_t slot = 0; slot < slotCount; ++slot) {
        elements.emplace_back(slot, "");
    }
    image.buckets(1).chain(0, elements);
    image.slotImages[slotCount - 1].next.value = 0;
    open();
    CountingHandler counted(4);
    counted.afterElement = [&](std::uint32_t slot) {
        std::uint32_t const before = (slot + slotCount - 1) % slotCount;
        bool const enough = counted.elementsBeforeRestart.size() == 3;
        setNext(before, enough && slot == 0 ? noSlot : slot);
    };
    EXPECT_EQ(walkCounting(counted), "");
    constexpr std::uint64_t limit = 2 * (slotCount + 16 + 1024) + 1;
    EXPECT_EQ(counted.elementsBeforeRestart, (std::vector<std::uint64_t>{limit, limit, limit}));
    EXPECT_EQ(restarts, 3u);
    EXPECT_EQ(counted.elements, slotCount);
    EXPECT_EQ(counted.chains, 1u);
}

TEST_F(ChainWalkLimitsTest, WithLargeValuesASmallTableGetsLessRoomForOneChain)
{
    constexpr unsigned valueSize = 64 * 1024;
    image = TableImage::of("std::array<char>", valueSize).buckets(1).chain(0, {{0, ""}, {1, ""}});
    image.slotImages[1].next.value = 0;
    open();
    CountingHandler counted(valueSize);
    counted.afterElement = [&](std::uint32_t slot) {
        setNext(1 - slot, counted.elementsBeforeRestart.empty() ? slot : noSlot);
    };
    EXPECT_EQ(walkCounting(counted), "");
    EXPECT_EQ(counted.elementsBeforeRestart, std::vector<std::uint64_t>{2 * (2 + 16 + 16) + 1});
}

constexpr std::uint32_t mostElements = 16 + (1 << 20);  // of a table with one slot

TEST_F(ChainWalkLimitsTest, BucketsThatLeadToOneSlotAreWalkedUpToAMillion)
{
    openWithOneChain(mostElements, 4);
    CountingHandler counted(4);
    EXPECT_EQ(walkCounting(counted), "");
    EXPECT_EQ(counted.chains, mostElements);
}

TEST_F(ChainWalkLimitsTest, FarMoreElementsThanSlotsAreCorruption)
{
    openWithOneChain(mostElements + 1, 4);
    CountingHandler counted(4);
    std::string const message =
        "QuaskReaderGeneric::scan() the chains up to bucket:1048592 lead to elements:1048593 "
        "slots:1";
    EXPECT_EQ(walkCounting(counted), message);
    EXPECT_EQ(counted.chains, mostElements);
    EXPECT_EQ(debug.lines, Lines{"0 " + message});
}

TEST_F(ChainWalkLimitsTest, OfLargeValuesFewerElementsAreTaken)
{
    constexpr unsigned valueSize = 64 * 1024;
    constexpr std::uint32_t most = 16 + (1 << 30) / valueSize;
    openWithOneChain(most, valueSize);
    CountingHandler sound(valueSize);
    EXPECT_EQ(walkCounting(sound), "");
    EXPECT_EQ(sound.chains, most);

    openWithOneChain(most + 1, valueSize);
    CountingHandler counted(valueSize);
    EXPECT_EQ(walkCounting(counted),
              "QuaskReaderGeneric::scan() the chains up to bucket:16400 lead to elements:16401 "
              "slots:1");
}

TEST_F(ChainWalkLimitsTest, ATableThatGrowsMayHaveAsManyElementsAsItsSlotsThen)
{
    openWithOneChain(mostElements + 100, 4);
    CountingHandler counted(4);
    counted.afterElement = [&](std::uint32_t) {
        if (counted.chains == mostElements - 1) {
            lengthen(100);
            publish(100);
        }
    };
    EXPECT_EQ(walkCounting(counted), "");
    EXPECT_EQ(counted.chains, mostElements + 100);
    EXPECT_EQ(statistics.remaps, 1u);
}

TEST_F(ChainWalkLimitsTest, EmptyBucketsDoNotCount)
{
    openWithOneChain(mostElements, 4);
    image.bucketLinks.resize(2 * mostElements, {0, noSlot});
    open();
    CountingHandler counted(4);
    EXPECT_EQ(walkCounting(counted), "");
    EXPECT_EQ(counted.chains, 2 * mostElements);
}

// A header that counts four thousand million slots in a file of one.
TEST_F(ChainWalkLimitsTest, OnlySlotsInsideTheFileCount)
{
    image = TableImage::of("std::int32_t", 4).buckets(1).chain(0, {{0, ""}});
    image.bucketLinks.assign(2 * mostElements, image.bucketLinks[0]);
    image.slotsHeader.mappedCount = 0xffffffff / 24;  // as much as the check's 32 bits let through
    open();
    EXPECT_LT(slots->slotCount(), 200u);
    CountingHandler counted(4);
    EXPECT_TRUE(walkCounting(counted).ends_with(" slots:" + std::to_string(slots->slotCount())));
}

}  // namespace
