#include "support/table_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/hex.h"

namespace {

using namespace QuaskTesting;
using namespace std::string_literals;

std::string hexOf(std::string const& bytes)
{
    return Dovan::dumpHex(bytes.data(), static_cast<unsigned>(bytes.size()));
}

std::string hexOf(std::string const& bytes, std::size_t offset, std::size_t size)
{
    return hexOf(bytes.substr(offset, size));
}

std::string contentsOf(std::string const& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

TEST(TableImage, ABucketFileIsItsHeaderAndALinkForEachBucket)
{
    auto image = TableImage::of("std::int32_t", 4).buckets(2).chain(1, {{3, "ab"}});
    image.bucketLinks[1].version = 0x0a0b0c0d;
    EXPECT_EQ(hexOf(image.bucketsFile()),
              "51554153 4b424b54 01000000 92100700 02000000 92100000 "
              "00000000 ffffffff 0d0c0b0a 03000000");
}

TEST(TableImage, ASlotFileIsItsHeaderTheLookasideSlotAndTheSlots)
{
    auto image = TableImage::of("char[9]", 9).buckets(1).chain(0, {{0, "nine char"}}).freeList({1});
    image.slotsHeader.classType = "Names";
    image.slotsHeader.maxSlots = 17;
    image.slotsHeader.hash = 0x01020304;
    image.slotsHeader.mappedVersion = 5;
    image.lookaside.sequence = 12;
    image.lookaside.value = "old value";
    image.slotImages[0].sequence = 8;
    std::string const file = image.slotsFile();
    EXPECT_EQ(file.size(), 176u + 32 * 3);
    EXPECT_EQ(hexOf(file, 0, 16), "51554153 4b534c54 04000000 92100700");
    EXPECT_EQ(file.substr(16, 64), "char[9]" + std::string(57, '\0'));
    EXPECT_EQ(file.substr(80, 64), "Names" + std::string(59, '\0'));
    EXPECT_EQ(hexOf(file, 144, 32),
              "09000000 20000000 11000000 04030201 01000000 01000000 05000000 02000000");
    EXPECT_EQ(hexOf(file, 176, 32),
              "00000000 ffffffff ffffffff 0c000000 6f6c6420 76616c75 65000000 00000000");
    EXPECT_EQ(hexOf(file, 208, 32),
              "00000000 ffffffff ffffffff 08000000 6e696e65 20636861 72000000 00000000");
    EXPECT_EQ(hexOf(file, 240, 32),
              "00000000 ffffffff ffffffff 00000000 00000000 00000000 00000000 00000000");
}

// FNV-1a multiplies once per byte, so the hash of zeros is a power of its factor.
TEST(TableImage, TheChecksumIsTheSumOfTheFieldsHashes)
{
    auto const hashOfZeros = [](int count) {
        std::uint32_t hash = 2166136261u;
        for (int i = 0; i < count; ++i) {
            hash *= 16777619u;
        }
        return hash;
    };
    TableImage image;
    image.slotsHeader.classType = "";
    image.slotsHeader.slotSize = 0;
    image.slotsHeader.maxSlots = 0;
    EXPECT_EQ(image.checksum(), 2 * hashOfZeros(64) + 3 * hashOfZeros(4));
    EXPECT_EQ(image.slotsFile().substr(156, 4), bytesOf(image.checksum()));

    std::uint32_t const before = image.checksum();
    image.slotsHeader.maxSlots = 1;
    EXPECT_NE(image.checksum(), before);
}

TEST(TableImage, AVandralFileIsOnePageWithItsHeader)
{
    TableImage image;
    image.vandral1.minSequence = 0x1122334455667788;
    image.vandral1.numReaders = 3;
    image.vandral1.reserved28 = 4;
    image.vandral1.currentTable = {5, 1};
    image.vandral1.notifications = {6, 7};
    image.vandral1.reserved48 = 8;
    image.vandral1.reserved52 = 9;
    std::string const file = image.vandral1File();
    EXPECT_EQ(file.size(), 4096u);
    EXPECT_EQ(hexOf(file, 0, 60),
              "51554153 4b56444c 01000000 92100700 88776655 44332211 03000000 04000000 "
              "05000000 01000000 06000000 07000000 08000000 09000000 00000000");
    EXPECT_EQ(hexOf(image.vandral2File(), 16, 40),
              "00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000 "
              "00000000 00000000");
}

TEST(TableImage, SlotsAreAMultipleOfEightBytesAndAtLeastTwentyFour)
{
    EXPECT_EQ(TableImage::of("", 0).slotsHeader.slotSize, 24u);
    EXPECT_EQ(TableImage::of("char", 1).slotsHeader.slotSize, 24u);
    EXPECT_EQ(TableImage::of("double", 8).slotsHeader.slotSize, 24u);
    EXPECT_EQ(TableImage::of("char[9]", 9).slotsHeader.slotSize, 32u);
    EXPECT_EQ(TableImage::of("char[1000]", 1000).slotsHeader.slotSize, 1016u);
}

TEST(TableImage, AChainLinksItsElementsInOrder)
{
    auto const image =
        TableImage::of("char[8]", 8).buckets(5).chain(4, {{2, "a"}, {0, "b"}, {1, "c"}});
    EXPECT_EQ(image.bucketLinks[4].value, 2u);
    EXPECT_EQ(image.slotImages[2].next.value, 0u);
    EXPECT_EQ(image.slotImages[0].next.value, 1u);
    EXPECT_EQ(image.slotImages[1].next.value, noSlot);
    EXPECT_EQ(image.slotImages[0].value, "b");
    EXPECT_EQ(image.slotsHeader.occupiedSlots, 3u);
}

TEST(TableImage, CountsCanBeSetToWhatTheyAreNot)
{
    auto image = TableImage::of("int", 4).buckets(3).slots(2);
    EXPECT_EQ(hexOf(image.bucketsFile(), 16, 4), "03000000");
    EXPECT_EQ(hexOf(image.slotsFile(), 172, 4), "02000000");
    image.bucketsHeader.numBuckets = 1024;
    image.slotsHeader.mappedCount = 1024;
    EXPECT_EQ(hexOf(image.bucketsFile(), 16, 4), "00040000");
    EXPECT_EQ(hexOf(image.slotsFile(), 172, 4), "00040000");
}

TEST(TableImage, ASlotBeingRewrittenHasItsValueInTheLookasideSlot)
{
    auto image = TableImage::of("char[8]", 8).buckets(1).chain(0, {{0, "old"}});
    image.slotImages[0].sequence = 12;
    image.rewriting(0, "old", "nld");
    EXPECT_EQ(image.slotImages[0].sequence, 14u);
    EXPECT_EQ(image.slotImages[0].value, "nld");
    EXPECT_EQ(image.lookaside.value, "old");
}

TEST(TableImage, EditsAreMadeInTheirOrder)
{
    auto const image = TableImage::of("int", 4)
                           .resize(TableFile::buckets, 8)
                           .patch(TableFile::buckets, 10, "xy")
                           .patch(TableFile::buckets, 5, "abc")
                           .resize(TableFile::buckets, 11);
    EXPECT_EQ(image.bucketsFile(), "QUASKabc\0\0x"s);
    EXPECT_EQ(image.vandral2File().size(), 4096u);
}

TEST(TableImage, WritesTheFilesThatItHas)
{
    PrivateRoot const root;
    auto image = TableImage::of("int", 4).buckets(3);
    image.writeTo(root, "feed/eq");
    std::string const directory = root.path() + "/feed/eq";
    EXPECT_EQ(contentsOf(directory + "/buckets"), image.bucketsFile());
    EXPECT_EQ(contentsOf(directory + "/slots"), image.slotsFile());
    EXPECT_EQ(contentsOf(directory + "/vandral.1"), image.vandral1File());
    EXPECT_EQ(contentsOf(directory + "/vandral.2"), image.vandral2File());
    EXPECT_EQ(contentsOf(directory + "/orvik"), std::string(4096, '\0'));

    image.without(TableFile::vandral2).writeTo(root, "feed/eq");
    EXPECT_TRUE(std::filesystem::exists(directory + "/vandral.1"));
    EXPECT_FALSE(std::filesystem::exists(directory + "/vandral.2"));
}

TEST(TableImage, LoadsWhatWasWritten)
{
    PrivateRoot const root;
    auto image = TableImage::of("char[8]", 8)
                     .buckets(3)
                     .chain(0, {{1, "a"}})
                     .chain(2, {{0, "b"}, {4, "c"}})
                     .freeList({3, 2});
    image.vandral1.notifications = {8, 9};
    image.lookaside.value = "before";
    image.writeTo(root, "eq");
    TableImage const loaded = TableImage::load(root.path() + "/eq");
    for (TableFile const which : allTableFiles) {
        EXPECT_EQ(loaded.file(which), image.file(which)) << fileName(which);
    }
    EXPECT_EQ(loaded.slotsHeader.freeHead, 3u);
    EXPECT_EQ(loaded.slotImages[4].value, "c\0\0\0\0\0\0\0"s);
}

TEST(TableImage, DoesNotLoadAFileThatIsTooShort)
{
    PrivateRoot const root;
    TableImage::of("int", 4).buckets(3).resize(TableFile::buckets, 40).writeTo(root, "eq");
    EXPECT_THROW(TableImage::load(root.path() + "/eq"), std::runtime_error);
}

}  // namespace
