#include "stat/table_state.h"

#include <gtest/gtest.h>

#include "stat/table_looks.h"

namespace {

using namespace Quask::Stat;

class TableStateTest : public testing::Test
{
protected:
    void use(std::uint32_t occupied) { look.figures.main->slots.occupiedSlots = occupied; }

    void expect(std::string const& text, Severity severity) const
    {
        auto const conditions = conditionsOf(look.figures, look.clients, limits);
        EXPECT_EQ(stateText(conditions, look.figures.problem), text);
        EXPECT_EQ(worstOf(conditions), severity) << text;
    }

    static Client client(pid_t pid, Role role, bool isStale)
    {
        return {.pid = pid, .role = role, .isStale = isStale, .command = {}};
    }

    TableLook look = QuaskTesting::lookOf(QuaskTesting::ordinaryTable());
    Limits limits;
};

TEST_F(TableStateTest, IsOkWhenNothingIsWrong)
{
    expect("ok", Severity::fine);
}

TEST_F(TableStateTest, IsNearlyFullFromItsLimitsOn)
{
    use(89);
    expect("ok", Severity::fine);
    use(90);
    expect("nearly full", Severity::warning);
    limits = {.warning = 80, .critical = 90};
    expect("nearly full", Severity::critical);
}

TEST_F(TableStateTest, IsFullWhenNoSlotIsFreeAndThereAreAsManyAsThereMayBe)
{
    auto& slots = look.figures.main->slots;
    slots.freeHead = Quask::SlotRef::null;
    expect("ok", Severity::fine);  // it can grow
    slots.mappedSlots.value = 100;
    use(100);
    expect("full", Severity::critical);
    slots.freeHead = 3;
    expect("nearly full", Severity::critical);
}

TEST_F(TableStateTest, ATableThatMayHaveNoSlotsIsFull)
{
    look.figures.main->slots.maxSlots = 0;
    look.figures.main->slots.mappedSlots.value = 0;
    look.figures.main->slots.freeHead = Quask::SlotRef::null;
    expect("full", Severity::critical);
}

TEST_F(TableStateTest, KnowsDeadAndSecondWriters)
{
    look.clients.owner = OwnerProcess::gone;
    expect("writer dead", Severity::critical);
    look.clients.owner = OwnerProcess::notWriter;
    expect("ok", Severity::fine);
    look.clients.clients = {client(1, Role::writer, false), client(2, Role::writer, true)};
    expect("stale clients", Severity::warning);
    look.clients.clients[1].isStale = false;
    expect("two writers", Severity::critical);
}

TEST_F(TableStateTest, KnowsFilesOfDifferentMakings)
{
    look.figures.notifications->secondary.orvik += 1;
    expect("mixed", Severity::critical);
    look.figures.notifications.reset();
    expect("ok", Severity::fine);
}

TEST_F(TableStateTest, ListsAllThatIsWrongTheWorstFirst)
{
    use(95);
    look.figures.main->slots.orvik += 1;
    look.figures.problem = "orvik: unheard of";
    look.clients.owner = OwnerProcess::gone;
    look.clients.clients = {client(2, Role::reader, true)};
    expect("writer dead, mixed, unreadable (orvik: unheard of), nearly full, stale clients",
           Severity::critical);
}

TEST_F(TableStateTest, WhatCannotBeReadMayBeCriticalAndComesBeforeAWarning)
{
    look.figures = {};
    look.figures.problem = "slots: the file is empty";
    look.clients.clients = {client(2, Role::reader, true)};
    expect("unreadable (slots: the file is empty), stale clients", Severity::cannotTell);
}

}  // namespace
