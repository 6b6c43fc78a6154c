#include "support/store_recorder.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/private_root.h"
#include "support/table_checks.h"
#include "support/table_writer.h"

namespace {

using namespace QuaskTesting;

std::string textOf(StoreStep const& step)
{
    std::ostringstream text;
    text << step;
    return text.str();
}

TEST(StoreStep, IsShownWithItsPlace)
{
    EXPECT_EQ(textOf({TableFile::slots, 208, {'\x0a', '\0', '\0', '\0'}}), "slots@208: 0a000000");
    EXPECT_EQ(textOf({TableFile::vandral1, 40, "12345678"}), "vandral.1@40: 31323334 35363738");
    EXPECT_EQ(textOf({TableFile::slots, 400}), "slots to 400 bytes");
}

TEST(StoreRecorder, RecordsOnlyWhileItLives)
{
    PrivateRoot const root;
    TableWriter writer(root.path() + "/eq", {});
    std::string const value(8, 'x');
    std::size_t recorded = 0;
    {
        StoreRecorder outer(writer);
        writer.insert(0, value);
        recorded = outer.steps.size();
        EXPECT_GT(recorded, 0u);
        {
            StoreRecorder inner(writer);
            writer.insert(0, value);
            EXPECT_EQ(inner.steps.size(), recorded);
        }
        EXPECT_EQ(outer.steps.size(), recorded);
        writer.update(0, value);
        EXPECT_GT(outer.steps.size(), recorded);
    }
    EXPECT_EQ(storeObserver, nullptr);
}

TEST(StoreReplay, TheStoresOfAnOperationAreAllThatItDoes)
{
    PrivateRoot const root;
    std::string const directory = root.path() + "/eq";
    TableShape shape;
    shape.slots = 1;
    TableWriter writer(directory, shape);
    StoreReplay replay(directory);
    TableImage const before = TableImage::load(directory);
    auto const steps = storesOf(writer, [&] {
        writer.insert(3, "value 1.");
        writer.insert(3, "value 2.");
        writer.insert(3, "value 3.");
        writer.update(1, "value 4.");
        writer.remove(3, 0);
        writer.setNumReaders(3);
    });
    TableImage const after = TableImage::load(directory);
    replay.restore();
    expectTable(directory, before);
    for (StoreStep const& step : steps) {
        replay.apply(step);
    }
    expectTable(directory, after);
}

TEST(StoreReplay, AStepShowsInTheMappingsOfTheFile)
{
    PrivateRoot const root;
    TableWriter writer(root.path() + "/eq", {});
    EXPECT_EQ(writer.occupiedSlots(), 0u);
    StoreReplay replay(root.path() + "/eq");
    replay.apply({TableFile::slots, 160, "\x05"});
    EXPECT_EQ(writer.occupiedSlots(), 5u);
}

}  // namespace
