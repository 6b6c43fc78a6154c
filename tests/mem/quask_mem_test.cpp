#include "mem/quask_mem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <type_traits>

#include "support/private_root.h"
#include "support/recording_handler.h"

namespace {

using Mem::Mode;
using Quask::QuaskMem;
using QuaskTesting::RecordingHandler;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<QuaskMem> && !std::is_copy_assignable_v<QuaskMem>);

class QuaskMemTest : public testing::Test
{
protected:
    // What is logged while it is made is forgotten.
    std::unique_ptr<QuaskMem> segment(char const* name, bool anonymous = false)
    {
        Quask::RootPath const rootPath(handler, "feed/eq", false);
        auto made = std::make_unique<QuaskMem>(handler, rootPath, name, anonymous);
        handler.lines.clear();
        return made;
    }

    std::string writeSlots(std::string const& contents)
    {
        return root.writeFile("feed/eq/slots", contents);
    }

    QuaskTesting::PrivateRoot root;
    RecordingHandler handler;
    std::string const directory = root.path() + "/feed/eq";
};

TEST_F(QuaskMemTest, TracesItsConstruction)
{
    Quask::RootPath const rootPath(handler, "feed/eq", false);
    QuaskMem const named(handler, rootPath, "slots", false);
    QuaskMem const anonymous(handler, rootPath, "slots", true);
    EXPECT_THAT(
        handler.lines,
        ElementsAre("5 QuaskMem::QuaskMem() prefix: " + directory + " name:slots localMem:0",
                    "5 QuaskMem::QuaskMem() prefix: " + directory + " name:slots localMem:1"));
}

TEST_F(QuaskMemTest, TheTraceOfASegmentWithoutANameEndsWhereTheNameWouldBe)
{
    Quask::RootPath const rootPath(handler, "feed/eq", false);
    QuaskMem const nameless(handler, rootPath, nullptr, false);
    EXPECT_THAT(handler.lines,
                ElementsAre("5 QuaskMem::QuaskMem() prefix: " + directory + " name:"));
}

TEST_F(QuaskMemTest, MapsNothingByItself)
{
    writeSlots("contents");
    EXPECT_EQ(segment("slots")->readableSize(), 0u);
}

TEST_F(QuaskMemTest, ItsFileIsTheNameInTheTablesDirectory)
{
    auto const slots = segment("slots");
    EXPECT_EQ(slots->getFilename(), directory + "/slots");
    EXPECT_THAT(
        handler.lines,
        ElementsAre("5 QuaskMem::getFilename() localMem: 0 filename: " + directory + "/slots"));
}

TEST_F(QuaskMemTest, AMissingFileHasNoSize)
{
    auto const slots = segment("slots");
    EXPECT_EQ(slots->memSize(), 0u);
    EXPECT_THAT(
        handler.lines,
        ElementsAre(
            "5 QuaskMem::getFilename() localMem: 0 filename: " + directory + "/slots",
            "5 QuaskMem::memSize() localMem: 0 filename: " + directory + "/slots memSize: 0",
            "5 QuaskMem::memSize() failed: No such file or directory filename: " + directory +
                "/slots"));
}

TEST_F(QuaskMemTest, TheSizeOfAFileIsTheOneItHasNowMappedOrNot)
{
    std::string const path = writeSlots("contents");
    auto const slots = segment("slots");
    EXPECT_EQ(slots->memSize(), 8u);
    ASSERT_NE(slots->attach(8, Mode::read), nullptr);
    std::filesystem::resize_file(path, 5000);
    EXPECT_EQ(slots->memSize(), 5000u);
    EXPECT_EQ(handler.lines.back(),
              "5 QuaskMem::memSize() localMem: 0 filename: " + path + " memSize: 5000");
}

TEST_F(QuaskMemTest, TheAttachTraceShowsTheSizeFromBeforeTheCall)
{
    std::string const path = writeSlots("contents");
    auto const slots = segment("slots");
    auto const* const text = static_cast<char const*>(slots->attach(8, Mode::read));
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "contents");
    EXPECT_THAT(handler.lines,
                ElementsAre("5 QuaskMem::getFilename() localMem: 0 filename: " + path,
                            "5 QuaskMem::attach() size: 0 localMem: 0 filename: " + path));
}

TEST_F(QuaskMemTest, AFailedAttachIsNullAndLeavesTheWordsToTheOwner)
{
    auto const slots = segment("slots");
    EXPECT_EQ(slots->attach(8, Mode::read), nullptr);
    EXPECT_THAT(
        handler.lines,
        ElementsAre("5 QuaskMem::getFilename() localMem: 0 filename: " + directory + "/slots",
                    "5 QuaskMem::attach() size: 0 localMem: 0 filename: " + directory + "/slots",
                    "5 QuaskMem::attach() failed: No such file or directory filename: " +
                        directory + "/slots"));
}

TEST_F(QuaskMemTest, ResizesTheMappingOfAFileThatHasGrown)
{
    std::string const path = writeSlots("head");
    auto const slots = segment("slots");
    ASSERT_NE(slots->attach(4, Mode::read), nullptr);
    std::filesystem::resize_file(path, 1 << 20);
    handler.lines.clear();
    auto const* const bytes = static_cast<char const*>(slots->resize(1 << 20));
    ASSERT_NE(bytes, nullptr);
    EXPECT_STREQ(bytes, "head");
    EXPECT_EQ(bytes[(1 << 20) - 1], 0);
    EXPECT_THAT(
        handler.lines,
        ElementsAre(
            "5 QuaskMem::getFilename() localMem: 0 filename: " + path,
            "5 QuaskMem::resize() resizing from 4 to 1048576 localMem: 0 filename: " + path));
}

TEST_F(QuaskMemTest, AnImpossibleResizeGivesNull)
{
    writeSlots("head");
    auto const slots = segment("slots");
    EXPECT_EQ(slots->resize(4096), nullptr);
    ASSERT_NE(slots->attach(4, Mode::read), nullptr);
    EXPECT_EQ(slots->resize(0), nullptr);
}

TEST_F(QuaskMemTest, DetachingUnmaps)
{
    std::string const path = writeSlots("contents");
    auto const slots = segment("slots");
    ASSERT_NE(slots->attach(8, Mode::read), nullptr);
    handler.lines.clear();
    EXPECT_EQ(slots->detach(), 0);
    EXPECT_EQ(slots->readableSize(), 0u);
    EXPECT_THAT(handler.lines, ElementsAre("5 QuaskMem::detach() localMem: 0 filename: " + path));
    EXPECT_NE(slots->attach(8, Mode::read), nullptr);
}

TEST_F(QuaskMemTest, AnAnonymousSegmentIsCalledSoInEveryTrace)
{
    writeSlots("the file of this name is never touched");
    auto const segment = QuaskMemTest::segment("slots", true);
    EXPECT_EQ(segment->getFilename(), "[ANONYMOUS]");
    EXPECT_EQ(segment->memSize(), 0u);
    ASSERT_NE(segment->attach(100, Mode::write), nullptr);
    EXPECT_EQ(segment->memSize(), 100u);
    ASSERT_NE(segment->resize(200), nullptr);
    EXPECT_EQ(segment->detach(), 0);
    std::string const named = "5 QuaskMem::getFilename() localMem: 1 filename: [ANONYMOUS]";
    EXPECT_THAT(
        handler.lines,
        ElementsAre(named,  //
                    named, "5 QuaskMem::memSize() localMem: 1 filename: [ANONYMOUS] memSize: 0",
                    named, "5 QuaskMem::attach() size: 0 localMem: 1 filename: [ANONYMOUS]",  //
                    named, "5 QuaskMem::memSize() localMem: 1 filename: [ANONYMOUS] memSize: 100",
                    named,
                    "5 QuaskMem::resize() resizing from 100 to 200 localMem: 1 filename: "
                    "[ANONYMOUS]",
                    "5 QuaskMem::detach() localMem: 1 filename: [ANONYMOUS]"));
}

TEST_F(QuaskMemTest, AnAnonymousSegmentKeepsItsContentsWhenItIsResized)
{
    auto const segment = QuaskMemTest::segment("slots", true);
    void* const bytes = segment->attach(100, Mode::write);
    ASSERT_NE(bytes, nullptr);
    std::memcpy(bytes, "kept", 5);
    void* const moved = segment->resize(1 << 20);
    ASSERT_NE(moved, nullptr);
    EXPECT_STREQ(static_cast<char const*>(moved), "kept");
    EXPECT_EQ(segment->memSize(), 1u << 20);
}

TEST_F(QuaskMemTest, SaysNothingBelowLevelFive)
{
    RecordingHandler quiet(4);
    Quask::RootPath const rootPath(quiet, "feed/eq", false);
    QuaskMem segment(quiet, rootPath, "slots", false);
    segment.memSize();
    segment.attach(8, Mode::read);
    segment.resize(8);
    segment.detach();
    EXPECT_THAT(quiet.lines, IsEmpty());
}

TEST_F(QuaskMemTest, IsUnmappedWhenItIsDestroyedByWhicheverBase)
{
    std::string const path = writeSlots("contents");
    auto const mapped = [&path] {
        std::ifstream maps("/proc/self/maps");
        std::string const text{std::istreambuf_iterator<char>(maps),
                               std::istreambuf_iterator<char>()};
        return text.find(path) != std::string::npos;
    };
    auto slots = segment("slots");
    ASSERT_NE(slots->attach(8, Mode::read), nullptr);
    EXPECT_TRUE(mapped());
    std::unique_ptr<Dovan::Debuggable> debuggable = std::move(slots);
    debuggable.reset();
    EXPECT_FALSE(mapped());
}

// The directory's text is copied: the root path need not live on.
TEST_F(QuaskMemTest, OutlivesItsRootPath)
{
    std::string const path = writeSlots("contents");
    auto rootPath = std::make_unique<Quask::RootPath>(handler, "feed/eq", false);
    QuaskMem const slots(handler, *rootPath, "slots", false);
    rootPath.reset();
    EXPECT_EQ(slots.getFilename(), path);
}

}  // namespace
