// Mutations of the table fuzzer's inputs that mean something: besides the fuzzer's own ones, edits
// that set one field of a header, of a slot or of a bucket to a value that is likely to matter.

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <string>

#include "base_tables.h"
#include "edited_table.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size,
                                        std::size_t maximumSize);

namespace {

using QuaskFuzzing::EditedTable;
using QuaskTesting::bytesOf;
namespace Slots = QuaskTesting::SlotsOffset;
namespace Buckets = QuaskTesting::BucketsOffset;
namespace Record = QuaskTesting::RecordOffset;

class EditMaker
{
public:
    EditMaker(unsigned seed, std::size_t baseTable)
        : random_(seed), header_(QuaskFuzzing::baseTable(baseTable).slotsHeader)
    {}

    unsigned below(unsigned end) { return static_cast<unsigned>(random_() % end); }

    std::string make()
    {
        switch (below(8)) {
            case 0:
                return edit(slots, Slots::valueType, typeName());
            case 1:
                return length(below(2) == 0 ? slots : buckets);
            case 2:
                return edit(slots, slotHeaderField(), bytesOf(number()));
            case 3:
                return edit(buckets, Buckets::numBuckets, bytesOf(number()));
            case 4:
                return edit(buckets, Buckets::link(below(8)), link());
            case 5:
                return edit(slots, slot() + Record::sequence, bytesOf(below(8)));
            default:
                return edit(slots, slot() + Record::next, link());
        }
    }

private:
    static constexpr unsigned slots = 0;
    static constexpr unsigned buckets = 3;

    std::uint64_t slot()
    {
        return Slots::slot(header_.slotSize, below(10)) - below(2) * header_.slotSize;
    }

    std::uint64_t slotHeaderField()
    {
        constexpr std::array fields{Slots::valueSize, Slots::slotSize,    Slots::occupiedSlots,
                                    Slots::freeHead,  Slots::mappedSlots, Slots::mappedSlots + 4};
        return fields[below(fields.size())];
    }

    std::string typeName()
    {
        constexpr std::array names{"char",  "char[%]",        "bool",       "float[%]", "double",
                                   "long",  "std::int8_t[%]", "short[%]",   "",         "char[0]",
                                   "int[%", "std::",          "uint32_t[%]"};
        std::string name = names[below(names.size())];
        if (std::size_t const place = name.find('%'); place != std::string::npos) {
            name.replace(place, 1, std::to_string(below(2) == 0 ? number() : 1 + below(12)));
        }
        return name + '\0';
    }

    std::uint32_t number()
    {
        constexpr std::array<std::uint32_t, 16> likely{
            0,    1,    2,          16,         24,         200,        4072,       4096,
            8191, 8192, 0x10000000, 0x20000000, 0x7fffffff, 0x80000000, 0xfffffffe, 0xffffffff};
        return below(2) == 0 ? likely[below(likely.size())] + below(3) - 1 : below(64);
    }

    std::string link()
    {
        std::uint32_t const index = below(3) == 0 ? number() : below(12);
        return std::string(bytesOf(below(4))) + std::string(bytesOf(index));
    }

    std::string edit(unsigned file, std::uint64_t position, std::string_view bytes)
    {
        return head(file, position) + static_cast<char>(bytes.size()) + std::string(bytes);
    }

    std::string length(unsigned file)
    {
        return head(file | EditedTable::setsLengthBit, below(EditedTable::maximumFileSize));
    }

    std::string head(unsigned kind, std::uint64_t position)
    {
        bool const isLive = below(2) == 0;
        auto const place = static_cast<std::uint16_t>(position);
        std::string text(1, static_cast<char>(isLive ? kind | EditedTable::liveBit : kind));
        text += bytesOf(place);
        return isLive ? text + static_cast<char>(below(below(2) == 0 ? 8 : 256)) : text;
    }

    std::minstd_rand random_;
    QuaskTesting::SlotsHeaderImage const& header_;
};

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maximumSize, unsigned seed)
{
    EditMaker maker(seed, size == 0 ? 1 : data[0] % QuaskFuzzing::baseTableCount);
    std::string const edit = maker.make();
    if (size == 0 || size + edit.size() > maximumSize || maker.below(2) == 0) {
        return LLVMFuzzerMutate(data, size, maximumSize);
    }
    // The two places where no edit can be torn apart by it, unless the last one is cut short.
    std::size_t const place = maker.below(2) == 0 ? 1 : size;
    std::memmove(data + place + edit.size(), data + place, size - place);
    std::memcpy(data + place, edit.data(), edit.size());
    if (maker.below(8) != 0) {
        data[0] |= EditedTable::checksumBit;
    }
    return size + edit.size();
}
