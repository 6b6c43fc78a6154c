#include "table/header_text.h"

#include <gtest/gtest.h>

#include "support/aligned_bytes.h"
#include "support/table_files.h"

namespace {

using namespace QuaskTesting;
using SlotsHeader = Quask::SlotTable<Quask::EmptyValue>::Header;

std::string bucketsText(TableImage const& image)
{
    AlignedBytes const live(image.bucketsFile());
    std::string text = "of another header";
    Quask::QuaskTest::formatBucketsHeader(live.as<Quask::BucketTable::Header>(), text);
    return text;
}

std::string slotsText(TableImage const& image)
{
    AlignedBytes const live(image.slotsFile());
    std::string text = "of another header";
    Quask::QuaskTest::formatSlotsHeader(SlotsHeader(live.as<SlotsHeader>()), text);
    return text;
}

std::string vandralText(TableImage const& image)
{
    AlignedBytes const live(image.vandral1File());
    std::string text = "of another header";
    Quask::Vandral::Header const copy(live.as<Quask::Vandral::Header>());
    Quask::QuaskTest::formatVandralHeader(copy, text);
    return text;
}

// The rest of the line that begins with a tab and this label.
std::string lineOf(std::string const& text, std::string const& label)
{
    std::size_t const begin = text.find("\t" + label);
    if (begin == std::string::npos) {
        return "no such line";
    }
    std::size_t const end = text.find('\n', begin);
    return text.substr(begin + 1 + label.size(), end - begin - 1 - label.size());
}

TEST(FormatBucketsHeader, ShowsEveryField)
{
    TableImage image;
    image.bucketsHeader.orvik = 7u << 16 | 4242;
    image.bucketsHeader.numBuckets = 1024;
    image.bucketsHeader.ownerPid = 31;
    EXPECT_EQ(bucketsText(image),
              " (24 bytes)\n"
              "\tMagic: 0x544b424b53415551 (\"QUASKBKT\")\n"
              "\tVersion: 1\n"
              "\tOrvik: 462994 (pid: 4242 instanceId: 7)\n"
              "\tSize: 1024 buckets\n"
              "\tOwner pid: 31\n");
}

TEST(FormatBucketsHeader, ShowsAForeignHeaderAsItIs)
{
    TableImage image;
    image.bucketsHeader = {.magic = "\x0a\tA",
                           .version = 4294967295,
                           .orvik = 4294967295,
                           .numBuckets = 4294967295,
                           .ownerPid = 4294967295};
    EXPECT_EQ(bucketsText(image),
              " (24 bytes)\n"
              "\tMagic: 0x41090a (\"..A.....\")\n"
              "\tVersion: 4294967295\n"
              "\tOrvik: 4294967295 (pid: 65535 instanceId: 65535)\n"
              "\tSize: 4294967295 buckets\n"
              "\tOwner pid: 4294967295\n");
}

TEST(FormatSlotsHeader, ShowsEveryField)
{
    auto image = TableImage::of("std::uint32_t[3]", 12);
    SlotsHeaderImage& header = image.slotsHeader;
    header.classType = "Feed::Book";
    header.hash = 0x1f;
    header.maxSlots = 1000;
    header.occupiedSlots = 31;
    header.freeHead = 32;
    header.mappedVersion = 16;
    header.mappedCount = 64;
    image.lookaside.sequence = 0xabc;
    EXPECT_EQ(slotsText(image),
              " (176 + 32 bytes)\n"
              "\tMagic: 0x544c534b53415551 (\"QUASKSLT\")\n"
              "\tVersion: 4\n"
              "\tOrvik: 462994 (pid: 4242 instanceId: 7)\n"
              "\tHash: 0x0000001f\n"
              "\tOccupied slots: 31\n"
              "\tMapped slots: 16:64\n"
              "\tMax slots: 1000\n"
              "\tValue type: 12 bytes \"std::uint32_t[3]\"\n"
              "\tClass type: \"Feed::Book\"\n"
              "\tSlot size: 32 bytes\n"
              "\tHead of free list: 32\n"
              "\tLookaside version: 0x00000abc\n"
              "\tLookaside value: ");
}

TEST(FormatSlotsHeader, ShowsAForeignHeaderAsItIs)
{
    TableImage image;
    image.patch(TableFile::slots, 0, std::string(200, '\0'));
    EXPECT_EQ(slotsText(image),
              " (176 + 0 bytes)\n"
              "\tMagic: 0x0 (\"........\")\n"
              "\tVersion: 0\n"
              "\tOrvik: 0 (pid: 0 instanceId: 0)\n"
              "\tHash: 0x00000000\n"
              "\tOccupied slots: 0\n"
              "\tMapped slots: 0:0\n"
              "\tMax slots: 0\n"
              "\tValue type: 0 bytes \"\"\n"
              "\tClass type: \"\"\n"
              "\tSlot size: 0 bytes\n"
              "\tHead of free list: 0\n"
              "\tLookaside version: 0x00000000\n"
              "\tLookaside value: ");
}

TEST(FormatSlotsHeader, AnEmptyFreeListHasNoHead)
{
    TableImage image;
    image.slotsHeader.freeHead = 0xffffffff;
    EXPECT_EQ(lineOf(slotsText(image), "Head of free list: "), "None");
    image.slotsHeader.freeHead = 0xfffffffe;
    EXPECT_EQ(lineOf(slotsText(image), "Head of free list: "), "4294967294");
}

// No bound of the field's own: what follows it is shown, up to a NUL.
TEST(FormatSlotsHeader, ANameThatFillsItsFieldGoesOnAfterIt)
{
    auto image = TableImage::of(std::string(64, 'v'), 4);
    image.slotsHeader.classType = std::string(64, 'c');
    image.slotsHeader.valueSize = 0x4241;
    std::string const text = slotsText(image);
    EXPECT_EQ(lineOf(text, "Value type: "),
              "16961 bytes \"" + std::string(64, 'v') + std::string(64, 'c') + "AB\"");
    EXPECT_EQ(lineOf(text, "Class type: "), "\"" + std::string(64, 'c') + "AB\"");
    image.slotsHeader.classType = "Feed::Book";
    EXPECT_EQ(lineOf(slotsText(image), "Value type: "),
              "16961 bytes \"" + std::string(64, 'v') + "Feed::Book\"");
}

TEST(FormatSlotsHeader, ANameEndsWithTheHeaderAtTheLatest)
{
    TableImage image;
    image.patch(TableFile::slots, 0, std::string(300, 'x'));
    std::string const text = slotsText(image);
    EXPECT_EQ(lineOf(text, "Value type: "),
              "2021161080 bytes \"" + std::string(200 - 16, 'x') + "\"");
    EXPECT_EQ(lineOf(text, "Class type: "), "\"" + std::string(200 - 80, 'x') + "\"");
}

TEST(FormatVandralHeader, ShowsEveryField)
{
    TableImage image;
    image.vandral1 = {.version = 3,
                      .minSequence = 18446744073709551615u,
                      .numReaders = 10,
                      .reserved28 = 99,
                      .currentTable = {31, 1},
                      .notifications = {2748, 12},
                      .reserved48 = 99,
                      .reserved52 = 99};
    EXPECT_EQ(vandralText(image),
              " (56 bytes)\n"
              "\tMagic: 0x4c44564b53415551 (\"QUASKVDL\")\n"
              "\tVersion: 3\n"
              "\tOrvik: 462994 (pid: 4242 instanceId: 7)\n"
              "\tMinimum sequence: 18446744073709551615\n"
              "\tNumber of connected readers: 10\n"
              "\tNotifications: abc:12\n"
              "\tCurrent table: Secondary (version: 0x0000001f)\n");
}

TEST(FormatVandralHeader, TheFirstTableIsThePrimaryAndEveryOtherTheSecondary)
{
    TableImage image;
    EXPECT_EQ(lineOf(vandralText(image), "Current table: "), "Primary (version: 0x00000000)");
    for (std::uint32_t const table : {1u, 2u, 4294967295u}) {
        image.vandral1.currentTable = {0xfedcba98, table};
        EXPECT_EQ(lineOf(vandralText(image), "Current table: "), "Secondary (version: 0xfedcba98)");
    }
}

TEST(FormatVandralHeader, AMagicOfZeroIsOneDigit)
{
    TableImage image;
    image.vandral1.magic = "";
    EXPECT_EQ(lineOf(vandralText(image), "Magic: "), "0x0 (\"........\")");
}

}  // namespace
