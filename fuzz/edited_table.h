#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "input.h"
#include "support/table_layout.h"

namespace QuaskFuzzing {

constexpr std::size_t fileCount = QuaskTesting::allTableFiles.size();

// What an input makes of a table's five files, and of the writer that changes them while they are
// read: a base table and edits, so that most inputs get past the checks of the headers.
//
// The first byte's bits 0-2 number the base table (see base_tables.h); bit 3 gives the slot header
// the right checksum once the edits are made. Then come edits up to the end of the input:
//
//     1 byte   bits 0-2: the file; bit 3: this sets the file's length; bit 4: made during the run
//     2 bytes  where in the file, or the length
//     1 byte   made during the run: how many loads from the table after the edit before it
//     1 byte   unless this sets the length: the number of bytes that follow and are written there
//
// Positions are taken modulo maximumFileSize. Writing after a file's end lengthens it. During the
// run, as with any sound writer, a file is never cut.
class EditedTable
{
public:
    static constexpr std::size_t maximumFileSize = 12 * 1024;

    struct Edit
    {
        std::size_t file;  // an index into `files`
        bool setsLength;
        std::size_t position;
        std::string_view bytes;  // in the input
        unsigned wait = 0;
    };

    // The input's bytes must stay as long as the table.
    explicit EditedTable(Input input);

    // The files as the reader first finds them, in the order of allTableFiles.
    std::array<std::string, fileCount> files;

    std::vector<Edit> liveEdits;

    // The file that bits 0-2 of an edit's first byte stand for. The slot file has the most to get
    // wrong, and so the most of them.
    static QuaskTesting::TableFile fileOf(unsigned bits);

    static constexpr unsigned setsLengthBit = 8;
    static constexpr unsigned liveBit = 16;
    static constexpr unsigned checksumBit = 8;

private:
    void apply(Edit const& edit);
    void makeChecksumRight();
};

}  // namespace QuaskFuzzing
