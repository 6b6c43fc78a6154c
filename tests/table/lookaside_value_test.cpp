#include "table/lookaside_value.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include <sys/stat.h>

#include "support/private_root.h"
#include "support/recording_handler.h"
#include "support/table_files.h"
#include "table/reader_statistics.h"

namespace {

using namespace QuaskTesting;
using Quask::LookasideValue;
using SlotsHeader = Quask::SlotTable<Quask::EmptyValue>::Header;

class LookasideValueTest : public testing::Test
{
protected:
    // The text of the lookaside value in the slot file of `image`.
    std::string textIn(TableImage const& image)
    {
        image.writeTo(root, "eq");
        return text();
    }

    // The same of the file that is there.
    std::string text()
    {
        RecordingHandler debug(-1);
        Quask::RootPath const rootPath(debug, "eq", false);
        Quask::ReaderStatistics statistics;
        Quask::SlotReaderGenericTable slots(debug, rootPath, statistics);
        EXPECT_TRUE(slots.attach());
        std::ostringstream out;
        LookasideValue(slots, SlotsHeader(slots.liveHeader())).printTo(out);
        return out.str();
    }

    PrivateRoot root;
};

TEST_F(LookasideValueTest, IsShownByItsType)
{
    auto image = TableImage::of("std::uint32_t[3]", 12);
    image.lookaside.value = std::string("\x01\0\0\0\x02\0\0\0\x03\0\0\0", 12);
    EXPECT_EQ(textIn(image), "{1, 2, 3}");
}

TEST_F(LookasideValueTest, OfUnknownTypeIsShownInHexadecimal)
{
    auto image = TableImage::of("Quask::EmptyValue", 8);
    image.lookaside.value = "\x10\x11\xaa\xbb\x01\x02\x03\x04";
    EXPECT_EQ(textIn(image), "1011aabb 01020304");
    image = TableImage::of("int", 5);
    image.lookaside.value = "\x01\x02\x03\x04\x05";
    EXPECT_EQ(textIn(image), "01020304 05");
}

TEST_F(LookasideValueTest, WithoutBytesIsAnEmptyText)
{
    EXPECT_EQ(textIn(TableImage::of("int", 0)), "");
}

TEST_F(LookasideValueTest, ThatPointsPastTheMappingHasTheBytesThereAre)
{
    auto image = TableImage::of("int", 4);
    image.slotsHeader.valueSize = 0xffffffff;
    image.lookaside.value = "abcd";
    std::string expected = "61626364";
    for (int i = 1; i < (4096 - 192) / 4; ++i) {
        expected += " 00000000";
    }
    EXPECT_EQ(textIn(image), expected);
}

// The bytes that are there are not a value of the type, even if they are as many as one has.
TEST_F(LookasideValueTest, ThatIsCutShortIsShownInHexadecimal)
{
    auto image = TableImage::of("char[3904]", 4000);
    image.resize(TableFile::slots, 4096);
    image.lookaside.value = "abcd";
    std::string const shown = textIn(image);
    EXPECT_EQ(shown.substr(0, 18), "61626364 00000000 ");
    EXPECT_EQ(shown.size(), 3904u / 4 * 9 - 1);
}

// Copied in several pieces, which are let go.
TEST_F(LookasideValueTest, OfSomeMegabytesIsShownWhole)
{
    constexpr std::uint32_t size = 5 << 20;
    std::string bytes(size, 'a');
    for (std::size_t i = 0; i < size; i += 1000) {
        bytes[i] = static_cast<char>('b' + i / 1000 % 20);
    }
    auto image = TableImage::of("char[5242880]", size);
    image.slotsHeader.slotSize = size + 16;
    image.lookaside.value = bytes;
    EXPECT_TRUE(textIn(image) == '"' + bytes + '"');
}

TEST_F(LookasideValueTest, InAHoleOfTheFileIsZerosAndLeavesTheHole)
{
    constexpr std::uint32_t size = 4 << 20;
    auto image = TableImage::of("bool[4194304]", size);
    image.slotsHeader.slotSize = 24;
    image.writeTo(root, "eq");
    std::string const path = root.path() + "/eq/slots";
    std::filesystem::resize_file(path, size + 400);
    auto const blocks = [&path] {
        struct stat status = {};
        stat(path.c_str(), &status);
        return status.st_blocks;
    };
    auto const before = blocks();
    EXPECT_LT(before, 1000);
    std::string const shown = text();
    EXPECT_EQ(shown.substr(0, 15), "{false, false, ");
    EXPECT_EQ(shown.size(), 7u * size);
    EXPECT_EQ(blocks(), before);
}

}  // namespace
