#include "edited_table.h"

#include <algorithm>

#include "base_tables.h"
#include "support/util.h"

namespace QuaskFuzzing {
namespace {

using QuaskTesting::TableFile;

std::size_t indexOf(TableFile file)
{
    return static_cast<std::size_t>(file);
}

static_assert(QuaskTesting::allTableFiles[static_cast<std::size_t>(TableFile::slots)] ==
              TableFile::slots);

}  // namespace

EditedTable::EditedTable(Input input)
{
    unsigned const first = input.byte();
    for (TableFile const file : QuaskTesting::allTableFiles) {
        files[indexOf(file)] = baseTable(first % baseTableCount).file(file);
    }
    while (!input.atEnd()) {
        unsigned const kind = input.byte();
        Edit edit{indexOf(fileOf(kind)), (kind & setsLengthBit) != 0, input.word(), {}};
        edit.position %= maximumFileSize;
        if ((kind & liveBit) != 0) {
            edit.wait = input.byte();
        }
        if (!edit.setsLength) {
            edit.bytes = input.bytes(input.byte());
            edit.bytes = edit.bytes.substr(0, maximumFileSize - edit.position);
        }
        if ((kind & liveBit) != 0) {
            liveEdits.push_back(edit);
        } else {
            apply(edit);
        }
    }
    if ((first & checksumBit) != 0) {
        makeChecksumRight();
    }
}

TableFile EditedTable::fileOf(unsigned bits)
{
    constexpr std::array files{TableFile::slots,    TableFile::slots,   TableFile::slots,
                               TableFile::buckets,  TableFile::buckets, TableFile::vandral1,
                               TableFile::vandral2, TableFile::orvik};
    return files[bits % files.size()];
}

void EditedTable::apply(Edit const& edit)
{
    std::string& file = files[edit.file];
    if (edit.setsLength) {
        file.resize(edit.position);
        return;
    }
    file.resize(std::max(file.size(), edit.position + edit.bytes.size()));
    file.replace(edit.position, edit.bytes.size(), edit.bytes);
}

void EditedTable::makeChecksumRight()
{
    namespace Offset = QuaskTesting::SlotsOffset;
    std::string& slots = files[indexOf(TableFile::slots)];
    if (slots.size() < Offset::occupiedSlots) {
        return;
    }
    auto const hashOf = [&](std::size_t offset, unsigned size) {
        return Quask::Util::hash(slots.data() + offset, size);
    };
    std::uint32_t const sum = hashOf(Offset::valueType, 64) + hashOf(Offset::classType, 64) +
                              hashOf(Offset::valueSize, 4) + hashOf(Offset::slotSize, 4) +
                              hashOf(Offset::maxSlots, 4);
    slots.replace(Offset::hash, sizeof sum, reinterpret_cast<char const*>(&sum), sizeof sum);
}

}  // namespace QuaskFuzzing
