#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "stat/rates.h"
#include "stat/table_look.h"

namespace Quask::Stat {

// What a row is made of.
struct Row
{
    TableLook const& look;
    std::string state;           // the conditions in words
    std::optional<Rates> rates;  // since the look before, if there was one
};

struct Column
{
    enum class Kind
    {
        number,
        name,   // cut where the terminal is too narrow
        words,  // continued in the next line there
    };

    char const* name;
    char const* meaning;  // one line
    Kind kind;
    bool needsInterval;  // it shows what happened since the look before

    // The text of the cell, which may hold any bytes that a stranger chose; nothing when there is
    // nothing to show.
    std::optional<std::string> (*cell)(Row const& row);
};

// All columns there are, in the order in which they are listed.
std::span<Column const> allColumns();

// Those shown when none are asked for, at intervals or once.
std::vector<Column const*> defaultColumns(bool atIntervals);

// The columns of a list as -o takes it: names with commas between, in any case; with a "+" before
// the list, after the default ones. Nothing, with the reason in `error`, when one is not known, is
// named not once, or needs intervals.
std::vector<Column const*> chooseColumns(std::string_view list, bool atIntervals,
                                         std::string& error);

// Who writes the table: "command-pid", several with commas between; "dead" with the pid when the
// owner's process is gone; "command-pid?" for an owner that could not be looked into; "none".
std::string writerText(TableLook const& look);

}  // namespace Quask::Stat
