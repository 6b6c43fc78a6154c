#pragma once

#include <array>
#include <bit>
#include <cstdint>

// The files of a table as those who write them know them. An account of the format of its own:
// tests of the tool must not be checked against the tool's.
namespace QuaskTesting {

static_assert(std::endian::native == std::endian::little, "table files are little-endian");

// The files of a table, in the order in which a table is made: the one that readers look for first
// is there last.
enum class TableFile
{
    orvik,
    vandral2,
    vandral1,
    slots,
    buckets
};

inline constexpr std::array allTableFiles{TableFile::orvik, TableFile::vandral2,
                                          TableFile::vandral1, TableFile::slots,
                                          TableFile::buckets};

// The file's bare name.
constexpr char const* fileName(TableFile file)
{
    switch (file) {
        case TableFile::orvik:
            return "orvik";
        case TableFile::vandral2:
            return "vandral.2";
        case TableFile::vandral1:
            return "vandral.1";
        case TableFile::slots:
            return "slots";
        case TableFile::buckets:
            break;
    }
    return "buckets";
}

// The index that names no slot: an empty bucket, the end of a chain, an empty free list.
constexpr std::uint32_t noSlot = 0xFFFFFFFF;

// The bit of a slot's sequence that is set while its value is being rewritten.
constexpr std::uint32_t lookasideBit = 2;

// Pairs of two 32-bit words are written as one 64-bit word: a link is {version, index of a slot},
// mappedSlots {version, count}, the pairs of a vandral header {version, value}.
constexpr std::uint64_t packPair(std::uint32_t version, std::uint32_t value)
{
    return std::uint64_t(value) << 32 | version;
}
constexpr std::uint32_t pairVersion(std::uint64_t pair)
{
    return static_cast<std::uint32_t>(pair);
}
constexpr std::uint32_t pairValue(std::uint64_t pair)
{
    return static_cast<std::uint32_t>(pair >> 32);
}

// Byte offsets in the file "buckets".
namespace BucketsOffset {
constexpr std::uint64_t version = 8, orvik = 12, numBuckets = 16, ownerPid = 20, links = 24;
constexpr std::uint64_t link(std::uint32_t bucket)
{
    return links + std::uint64_t(8) * bucket;
}
}  // namespace BucketsOffset

// Byte offsets in the file "slots".
namespace SlotsOffset {
constexpr std::uint64_t version = 8, orvik = 12, valueType = 16, classType = 80, valueSize = 144,
                        slotSize = 148, maxSlots = 152, hash = 156, occupiedSlots = 160,
                        freeHead = 164, mappedSlots = 168, lookaside = 176;
constexpr std::uint64_t slot(std::uint32_t slotSize_, std::uint32_t index)
{
    return lookaside + std::uint64_t(slotSize_) * (1 + std::uint64_t(index));
}
}  // namespace SlotsOffset

// Byte offsets in a slot's record; the lookaside slot has one, too.
namespace RecordOffset {
constexpr std::uint64_t next = 0, writersWord = 8, sequence = 12, value = 16;
}

// Byte offsets in the files "vandral.1" and "vandral.2".
namespace VandralOffset {
constexpr std::uint64_t version = 8, orvik = 12, minSequence = 16, numReaders = 24,
                        currentTable = 32, notifications = 40, headerSize = 56;
}

// Bytes of a slot's record for values of `valueSize` bytes.
constexpr std::uint32_t slotSizeFor(std::uint32_t valueSize)
{
    std::uint32_t const size = (16 + valueSize + 7) / 8 * 8;
    return size < 24 ? 24 : size;
}

// Bytes of a slot file that holds `count` slots.
constexpr std::uint64_t slotsFileSize(std::uint32_t slotSize, std::uint32_t count)
{
    return SlotsOffset::slot(slotSize, count);
}

// Bytes of a vandral file and of "orvik", which a writer makes one page long.
constexpr std::uint64_t companionFileSize = 4096;

}  // namespace QuaskTesting
