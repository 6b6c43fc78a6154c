#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "support/table_files.h"

namespace QuaskTesting {
namespace {

// Takes a file apart front to back, field by field.
class Fields
{
public:
    Fields(std::string const& directory, TableFile file) : path_(directory + "/" + fileName(file))
    {
        std::ifstream stream(path_, std::ios::binary);
        if (!stream) {
            throw std::runtime_error("cannot read " + path_);
        }
        bytes_.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    }

    std::uint32_t u32() { return number<std::uint32_t>(); }
    std::uint64_t u64() { return number<std::uint64_t>(); }

    PairImage pair()
    {
        std::uint32_t const version = u32();
        return {version, u32()};
    }

    std::string raw(std::size_t size)
    {
        if (bytes_.size() - position_ < size) {
            throw std::runtime_error(path_ + " is too short");
        }
        position_ += size;
        return bytes_.substr(position_ - size, size);
    }

    std::string text(std::size_t room)
    {
        std::string text = raw(room);
        text.erase(text.find_last_not_of('\0') + 1);
        return text;
    }

    SlotImage slot(std::uint32_t slotSize)
    {
        SlotImage slot;
        slot.next = pair();
        slot.writersWord = u32();
        slot.sequence = u32();
        slot.value = raw(slotSize - 16);
        return slot;
    }

private:
    template <typename Word>
    Word number()
    {
        Word word;
        std::memcpy(&word, raw(sizeof word).data(), sizeof word);
        return word;
    }

    std::string path_;
    std::string bytes_;
    std::size_t position_ = 0;
};

VandralImage loadVandral(Fields fields)
{
    VandralImage header;
    header.magic = fields.text(8);
    header.version = fields.u32();
    header.orvik = fields.u32();
    header.minSequence = fields.u64();
    header.numReaders = fields.u32();
    header.reserved28 = fields.u32();
    header.currentTable = fields.pair();
    header.notifications = fields.pair();
    header.reserved48 = fields.u32();
    header.reserved52 = fields.u32();
    return header;
}

}  // namespace

TableImage TableImage::load(std::string const& directory)
{
    TableImage image;
    Fields buckets(directory, TableFile::buckets);
    image.bucketsHeader.magic = buckets.text(8);
    image.bucketsHeader.version = buckets.u32();
    image.bucketsHeader.orvik = buckets.u32();
    image.bucketsHeader.numBuckets = buckets.u32();
    image.bucketsHeader.ownerPid = buckets.u32();
    for (std::uint32_t i = 0; i < *image.bucketsHeader.numBuckets; ++i) {
        image.bucketLinks.push_back(buckets.pair());
    }

    Fields slots(directory, TableFile::slots);
    SlotsHeaderImage& header = image.slotsHeader;
    header.magic = slots.text(8);
    header.version = slots.u32();
    header.orvik = slots.u32();
    header.valueType = slots.text(64);
    header.classType = slots.text(64);
    header.valueSize = slots.u32();
    header.slotSize = slots.u32();
    header.maxSlots = slots.u32();
    header.hash = slots.u32();
    header.occupiedSlots = slots.u32();
    header.freeHead = slots.u32();
    header.mappedVersion = slots.u32();
    header.mappedCount = slots.u32();
    if (header.slotSize < 16) {
        throw std::runtime_error(directory + ": a slot without room for its links");
    }
    image.lookaside = slots.slot(header.slotSize);
    for (std::uint32_t i = 0; i < *header.mappedCount; ++i) {
        image.slotImages.push_back(slots.slot(header.slotSize));
    }

    image.vandral1 = loadVandral({directory, TableFile::vandral1});
    image.vandral2 = loadVandral({directory, TableFile::vandral2});
    return image;
}

}  // namespace QuaskTesting
