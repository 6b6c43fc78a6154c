#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/private_root.h"
#include "support/table_layout.h"

namespace QuaskTesting {

// The bytes of a number, array or plain struct, as they lie in memory; valid as long as `value` is.
template <typename T>
std::string_view bytesOf(T const& value)
{
    static_assert(std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>);
    return {reinterpret_cast<char const*>(&value), sizeof value};
}

// A pair of words, the version first. As a link its value is a slot's index.
struct PairImage
{
    std::uint32_t version = 0;
    std::uint32_t value = noSlot;
    bool operator==(PairImage const&) const = default;
};

struct SlotImage
{
    PairImage next;
    std::uint32_t writersWord = 0xFFFFFFFF;
    std::uint32_t sequence = 0;
    std::string value = {};  // shorter than the record's room for it: zeros follow; longer: cut
    bool operator==(SlotImage const&) const = default;
};

struct BucketsHeaderImage
{
    std::string magic = "QUASKBKT";  // of every text: zeros follow a short one, a long one is cut
    std::uint32_t version = 1;
    std::uint32_t orvik = 7 << 16 | 4242;
    std::optional<std::uint32_t> numBuckets = {};  // unset: the number of bucket links
    std::uint32_t ownerPid = 4242;
    bool operator==(BucketsHeaderImage const&) const = default;
};

struct SlotsHeaderImage
{
    std::string magic = "QUASKSLT";
    std::uint32_t version = 4;
    std::uint32_t orvik = 7 << 16 | 4242;
    std::string valueType = {};
    std::string classType = "Quask::Table";
    std::uint32_t valueSize = 0;
    std::uint32_t slotSize = 24;
    std::uint32_t maxSlots = 1024;
    std::optional<std::uint32_t> hash = {};  // unset: the checksum of the fields it covers
    std::uint32_t occupiedSlots = 0;
    std::uint32_t freeHead = noSlot;
    std::uint32_t mappedVersion = 0;
    std::optional<std::uint32_t> mappedCount = {};  // unset: the number of slots
    bool operator==(SlotsHeaderImage const&) const = default;
};

struct VandralImage
{
    std::string magic = "QUASKVDL";
    std::uint32_t version = 1;
    std::uint32_t orvik = 7 << 16 | 4242;
    std::uint64_t minSequence = 0;
    std::uint32_t numReaders = 0;
    std::uint32_t reserved28 = 0;
    PairImage currentTable = {0, 0};
    PairImage notifications = {0, 0};
    std::uint32_t reserved48 = 0;
    std::uint32_t reserved52 = 0;
    bool operator==(VandralImage const&) const = default;
};

// The five files of a table that nobody changes, as a value: a well-formed table unless fields are
// set to something else. The fluent operations return the image itself.
//
//     TableImage::of("std::int32_t", 4).buckets(40).chain(9, {{0, bytesOf(1)}, {1, bytesOf(2)}})
//
// What no field can say (odd lengths, foreign bytes, missing files) is done to the finished files
// by patch, resize and without, in the order of the calls.
struct TableImage
{
    // An element of a chain: its slot and its value's bytes, which are copied by the call.
    using Element = std::pair<std::uint32_t, std::string_view>;

    // A table without buckets and slots for values of this type name and size in bytes.
    static TableImage of(std::string_view valueType, std::uint32_t valueSize);

    // The image of the files in `directory`, complete but for what is after the last slot and
    // after the vandral headers. Throws std::runtime_error when a file is missing or too short for
    // what its header counts.
    static TableImage load(std::string const& directory);

    // Makes it this many buckets, the new ones empty.
    TableImage& buckets(std::uint32_t count);

    // Makes it this many slots, the new ones in no chain and not in the free list.
    TableImage& slots(std::uint32_t count);

    // Links these elements, the head first, after `bucket`, adding the slots that are missing and
    // counting them as occupied. Versions and sequences stay. The bucket must exist.
    TableImage& chain(std::uint32_t bucket, std::vector<Element> const& elements);

    // Makes these slots the free list, in this order, adding the slots that are missing.
    TableImage& freeList(std::vector<std::uint32_t> const& indices);

    // Puts the slot into the state that its value's rewriting leaves to readers: the value that
    // counts is in the lookaside slot, its own bytes are `halfWritten`.
    TableImage& rewriting(std::uint32_t slot, std::string_view value, std::string_view halfWritten);

    // Overwrites bytes of a finished file, lengthening it with zeros as far as needed.
    TableImage& patch(TableFile file, std::uint64_t offset, std::string_view bytes);

    // Cuts a finished file, or lengthens it with zeros.
    TableImage& resize(TableFile file, std::uint64_t size);

    // Leaves a file away.
    TableImage& without(TableFile file);

    // The bytes of a file, edited as asked for; also of one that is left away.
    std::string file(TableFile which) const;
    std::string bucketsFile() const { return file(TableFile::buckets); }
    std::string slotsFile() const { return file(TableFile::slots); }
    std::string vandral1File() const { return file(TableFile::vandral1); }
    std::string vandral2File() const { return file(TableFile::vandral2); }
    std::string orvikFile() const { return file(TableFile::orvik); }

    // Writes the files into `directory`, which is made where it is missing; files of these names
    // are replaced by new ones, also those left away here. Throws when that fails.
    void writeTo(std::string const& directory) const;
    void writeTo(PrivateRoot const& root, std::string const& tableName) const
    {
        writeTo(root.path() + "/" + tableName);
    }

    // The checksum that the slot header's fields should have.
    std::uint32_t checksum() const;

    BucketsHeaderImage bucketsHeader;
    std::vector<PairImage> bucketLinks;
    SlotsHeaderImage slotsHeader;
    SlotImage lookaside;
    std::vector<SlotImage> slotImages;
    VandralImage vandral1;
    VandralImage vandral2;

private:
    struct Edit
    {
        TableFile file;
        std::uint64_t position;  // where `bytes` go; without bytes the file's new length
        std::optional<std::string> bytes;
    };

    std::string builtFile(TableFile which) const;

    std::vector<Edit> edits_;
    std::vector<TableFile> missing_;
};

}  // namespace QuaskTesting
