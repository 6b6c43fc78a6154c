#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "edited_table.h"

namespace QuaskFuzzing {

// The files of one table below the work directory, which stay open and are filled again for each
// run; and the writer that changes them during a run. One object in a process.
class LaidOutTable
{
public:
    LaidOutTable();
    LaidOutTable(LaidOutTable const&) = delete;
    LaidOutTable& operator=(LaidOutTable const&) = delete;
    ~LaidOutTable();

    // The table's path below the root directory.
    static constexpr char const* name = "t";

    // Fills the files and makes the writer ready for the first of the table's live edits. Nothing
    // may have the files mapped.
    void begin(EditedTable const& table);

    // The reader is about to load something.
    void beforeLoad()
    {
        if (nextEdit_ != lastEdit_) {
            tick();
        }
    }

private:
    void tick();
    void apply(EditedTable::Edit const& edit) const;

    std::array<int, fileCount> descriptors_;
    EditedTable::Edit const* nextEdit_ = nullptr;
    EditedTable::Edit const* lastEdit_ = nullptr;  // the one after the last
    unsigned waited_ = 0;                          // loads since the edit before nextEdit_
};

}  // namespace QuaskFuzzing
