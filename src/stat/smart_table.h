#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "stat/columns.h"

struct libscols_table;

namespace Quask::Stat {

// How rows are printed.
struct RowFormat
{
    enum class Kind
    {
        table,  // columns side by side
        raw,    // one space between cells; spaces and odd bytes in them as \xHH
        json,
    };

    Kind kind = Kind::table;
    bool hasHeadings = true;
    bool isUtf8 = false;  // whether the table may hold characters that are not ASCII
    unsigned width = 0;   // of the terminal, in characters; 0: none, as wide as it takes
};

// Rows in columns, by libsmartcols. Throws std::bad_alloc. One thread.
class SmartTable
{
public:
    SmartTable(std::vector<Column const*> columns, RowFormat const& format);

    void add(Row const& row);

    // All that was added, ready to be printed. JSON has the number of processes that could not be
    // looked into as well.
    std::string text(std::size_t unreadProcesses) const;

private:
    struct Release
    {
        void operator()(libscols_table* table) const;
    };

    std::string cellText(Column const& column, std::string text) const;

    std::vector<Column const*> const columns_;
    RowFormat const format_;
    std::unique_ptr<libscols_table, Release> table_;
};

}  // namespace Quask::Stat
