// Headers that change while they are copied, between any two loads of the copy.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "support/table_files.h"
#include "table/header_text.h"
#include "table/load_by_load.h"
#include "table/slot_table.h"
#include "table/vandral.h"

namespace {

using namespace QuaskTesting;
using SlotsHeader = Quask::SlotTable<Quask::EmptyValue>::Header;
using VandralHeader = Quask::Vandral::Header;

// A file's bytes that stand for a mapping and change.
class LiveBytes
{
public:
    explicit LiveBytes(std::string const& bytes) : words_(bytes.size() / 8)
    {
        std::memcpy(words_.data(), bytes.data(), bytes.size());
    }

    template <typename Header>
    Header const& as() const
    {
        return *reinterpret_cast<Header const*>(words_.data());
    }

    void put(std::uint64_t offset, std::string_view bytes)
    {
        std::memcpy(reinterpret_cast<char*>(words_.data()) + offset, bytes.data(), bytes.size());
    }

private:
    std::vector<std::uint64_t> words_;
};

class SlotsHeaderCopyTest : public testing::Test
{
protected:
    // Another state of the table: two words far apart and the version.
    void change(std::uint32_t version)
    {
        live.put(SlotsOffset::orvik, bytesOf(version));
        live.put(SlotsOffset::lookaside + RecordOffset::sequence, bytesOf(version));
        live.put(SlotsOffset::mappedSlots, bytesOf(packPair(version, 10 * version)));
    }

    // That the copy is the state of this version.
    static void expectState(SlotsHeader const& copy, std::uint32_t version)
    {
        EXPECT_EQ(copy.orvik, version);
        EXPECT_EQ(copy.lookaside.sequence, version);
        EXPECT_EQ(copy.mappedSlots.version, version);
        EXPECT_EQ(copy.mappedSlots.value, 10 * version);
    }

    unsigned loadsOfOneCopy()
    {
        LoadByLoad const loads([](unsigned) {});
        expectState(SlotsHeader(live.as<SlotsHeader>()), 0);
        return loads.count();
    }

    LiveBytes live{[] {
        TableImage image;
        image.slotsHeader.orvik = 0;
        image.slotsHeader.mappedCount = 0;
        return image.slotsFile();
    }()};
};

TEST_F(SlotsHeaderCopyTest, IsMadeAgainWhenTheVersionChangedDuringTheCopy)
{
    unsigned const once = loadsOfOneCopy();
    for (unsigned when = 2; when <= once; ++when) {
        change(0);
        LoadByLoad const loads(atLoad(when, [&] { change(1); }));
        expectState(SlotsHeader(live.as<SlotsHeader>()), 1);
        EXPECT_EQ(loads.count(), 2 * once) << when;
    }
}

TEST_F(SlotsHeaderCopyTest, IsMadeOnceWhenTheChangeComesBefore)
{
    unsigned const once = loadsOfOneCopy();
    LoadByLoad const loads(atLoad(1, [&] { change(1); }));
    expectState(SlotsHeader(live.as<SlotsHeader>()), 1);
    EXPECT_EQ(loads.count(), once);
}

TEST_F(SlotsHeaderCopyTest, IsMadeUntilTheVersionHoldsStill)
{
    unsigned const once = loadsOfOneCopy();
    std::uint32_t version = 0;
    LoadByLoad const loads([&](unsigned load) {
        if (load % once == once / 2 && version < 7) {
            change(++version);
        }
    });
    expectState(SlotsHeader(live.as<SlotsHeader>()), 7);
    EXPECT_EQ(loads.count(), 8 * once);
}

// All figures come from one copy.
TEST_F(SlotsHeaderCopyTest, ItsTextShowsOneState)
{
    unsigned const once = loadsOfOneCopy();
    for (unsigned when = 1; when <= once + 10; ++when) {
        change(1);
        std::string text;
        {
            LoadByLoad const loads(atLoad(when, [&] { change(2); }));
            Quask::QuaskTest::formatSlotsHeader(SlotsHeader(live.as<SlotsHeader>()), text);
        }
        std::string const state = when <= once ? "2" : "1";
        EXPECT_NE(text.find("Orvik: " + state), std::string::npos) << when;
        EXPECT_NE(text.find("Mapped slots: " + state + ":" + state + "0\n"), std::string::npos);
        EXPECT_NE(text.find("Lookaside version: 0x0000000" + state), std::string::npos);
    }
}

TEST(VandralHeaderCopyTest, IsMadeUntilTheVersionOfItsNotificationsHoldsStill)
{
    LiveBytes live(TableImage().vandral1File());
    auto const change = [&live](std::uint32_t version) {
        live.put(VandralOffset::orvik, bytesOf(version));
        live.put(VandralOffset::notifications, bytesOf(packPair(version, version)));
        live.put(52, bytesOf(version));
    };
    change(0);
    unsigned once = 0;
    {
        LoadByLoad const loads([](unsigned) {});
        VandralHeader const copy(live.as<VandralHeader>());
        once = loads.count();
    }
    for (unsigned when = 1; when <= once; ++when) {
        change(0);
        LoadByLoad const loads(atLoad(when, [&] { change(1); }));
        VandralHeader const copy(live.as<VandralHeader>());
        EXPECT_EQ(copy.orvik, 1u) << when;
        EXPECT_EQ(copy.notifications.version, 1u);
        EXPECT_EQ(copy.notifications.value, 1u);
        EXPECT_EQ(copy.reserved52, 1u);
        EXPECT_EQ(loads.count(), when == 1 ? once : 2 * once);
    }
}

}  // namespace
