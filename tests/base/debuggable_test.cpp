#include "base/debuggable.h"

#include <gtest/gtest.h>

namespace {

class CountingHandler final : public Dovan::Platform::DebugHandler
{
public:
    explicit CountingHandler(int& destroyed) : destroyed_(destroyed) {}
    ~CountingHandler() override { ++destroyed_; }
    bool isEnabled(int /*level*/) const override { return false; }
    void log(std::ostream& /*message*/, int /*level*/) override { ADD_FAILURE(); }

private:
    int& destroyed_;
};

class Holder : public Dovan::Debuggable
{
public:
    using Debuggable::Debuggable;
    void takeOver(Dovan::Platform::DebugHandler* given)
    {
        if (owned) {
            delete handler;
        }
        handler = given;
        owned = true;
    }
    bool ownsItsHandler() const { return owned; }
    bool hasHandler() const { return handler != nullptr; }
};

TEST(Debuggable, LeavesASharedHandlerAlive)
{
    int destroyed = 0;
    CountingHandler shared(destroyed);
    {
        Holder const holder(shared);
        EXPECT_FALSE(holder.ownsItsHandler());
    }
    EXPECT_EQ(destroyed, 0);
}

TEST(Debuggable, DeletesAnOwnedHandlerOnce)
{
    int destroyed = 0;
    {
        Holder holder("Quask");
        holder.takeOver(new CountingHandler(destroyed));
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(Debuggable, OwnsTheHandlerItObtainsByName)
{
    Holder const holder("QuaskScanner");
    EXPECT_TRUE(holder.ownsItsHandler());
    EXPECT_TRUE(holder.hasHandler());
}

}  // namespace
