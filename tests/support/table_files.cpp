#include "support/table_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "support/util.h"

namespace QuaskTesting {
namespace {

// Puts a file together front to back, field by field.
class Bytes
{
public:
    Bytes& u32(std::uint32_t value) { return raw(bytesOf(value)); }
    Bytes& u64(std::uint64_t value) { return raw(bytesOf(value)); }
    Bytes& pair(PairImage const& pair) { return u32(pair.version).u32(pair.value); }

    Bytes& raw(std::string_view bytes)
    {
        bytes_ += bytes;
        return *this;
    }

    Bytes& text(std::string_view text, std::size_t room)
    {
        std::string padded(text);
        padded.resize(room);
        return raw(padded);
    }

    Bytes& slot(SlotImage const& slot, std::uint32_t slotSize)
    {
        std::string record =
            Bytes().pair(slot.next).u32(slot.writersWord).u32(slot.sequence).raw(slot.value).take();
        record.resize(slotSize);
        return raw(record);
    }

    std::string take() { return std::move(bytes_); }

private:
    std::string bytes_;
};

std::string vandralBytes(VandralImage const& header)
{
    std::string bytes = Bytes()
                            .text(header.magic, 8)
                            .u32(header.version)
                            .u32(header.orvik)
                            .u64(header.minSequence)
                            .u32(header.numReaders)
                            .u32(header.reserved28)
                            .pair(header.currentTable)
                            .pair(header.notifications)
                            .u32(header.reserved48)
                            .u32(header.reserved52)
                            .take();
    bytes.resize(companionFileSize);
    return bytes;
}

}  // namespace

TableImage TableImage::of(std::string_view valueType, std::uint32_t valueSize)
{
    TableImage image;
    image.slotsHeader.valueType = valueType;
    image.slotsHeader.valueSize = valueSize;
    image.slotsHeader.slotSize = slotSizeFor(valueSize);
    return image;
}

TableImage& TableImage::buckets(std::uint32_t count)
{
    bucketLinks.resize(count);
    return *this;
}

TableImage& TableImage::slots(std::uint32_t count)
{
    slotImages.resize(count);
    return *this;
}

TableImage& TableImage::chain(std::uint32_t bucket, std::vector<Element> const& elements)
{
    std::uint32_t following = noSlot;
    for (auto element = elements.rbegin(); element != elements.rend(); ++element) {
        auto const [index, value] = *element;
        if (index >= slotImages.size()) {
            slots(index + 1);
        }
        slotImages[index].value = value;
        slotImages[index].next.value = following;
        following = index;
    }
    bucketLinks.at(bucket).value = following;
    slotsHeader.occupiedSlots += static_cast<std::uint32_t>(elements.size());
    return *this;
}

TableImage& TableImage::freeList(std::vector<std::uint32_t> const& indices)
{
    std::uint32_t following = noSlot;
    for (auto index = indices.rbegin(); index != indices.rend(); ++index) {
        if (*index >= slotImages.size()) {
            slots(*index + 1);
        }
        slotImages[*index].next.value = following;
        following = *index;
    }
    slotsHeader.freeHead = following;
    return *this;
}

TableImage& TableImage::rewriting(std::uint32_t slot, std::string_view value,
                                  std::string_view halfWritten)
{
    slotImages.at(slot).sequence |= lookasideBit;
    slotImages[slot].value = halfWritten;
    lookaside.value = value;
    return *this;
}

TableImage& TableImage::patch(TableFile file, std::uint64_t offset, std::string_view bytes)
{
    edits_.push_back({file, offset, std::string(bytes)});
    return *this;
}

TableImage& TableImage::resize(TableFile file, std::uint64_t size)
{
    edits_.push_back({file, size, std::nullopt});
    return *this;
}

TableImage& TableImage::without(TableFile file)
{
    missing_.push_back(file);
    return *this;
}

std::uint32_t TableImage::checksum() const
{
    auto const hashOf = [](std::string const& bytes) {
        return Quask::Util::hash(bytes.data(), static_cast<unsigned>(bytes.size()));
    };
    SlotsHeaderImage const& header = slotsHeader;
    return hashOf(Bytes().text(header.valueType, 64).take()) +
           hashOf(Bytes().text(header.classType, 64).take()) +
           hashOf(Bytes().u32(header.valueSize).take()) +
           hashOf(Bytes().u32(header.slotSize).take()) +
           hashOf(Bytes().u32(header.maxSlots).take());
}

std::string TableImage::builtFile(TableFile which) const
{
    switch (which) {
        case TableFile::orvik:
            return std::string(companionFileSize, '\0');
        case TableFile::vandral1:
            return vandralBytes(vandral1);
        case TableFile::vandral2:
            return vandralBytes(vandral2);
        case TableFile::buckets: {
            BucketsHeaderImage const& header = bucketsHeader;
            Bytes bytes;
            bytes.text(header.magic, 8)
                .u32(header.version)
                .u32(header.orvik)
                .u32(header.numBuckets.value_or(static_cast<std::uint32_t>(bucketLinks.size())))
                .u32(header.ownerPid);
            for (PairImage const& link : bucketLinks) {
                bytes.pair(link);
            }
            return bytes.take();
        }
        case TableFile::slots:
            break;
    }
    SlotsHeaderImage const& header = slotsHeader;
    Bytes bytes;
    bytes.text(header.magic, 8)
        .u32(header.version)
        .u32(header.orvik)
        .text(header.valueType, 64)
        .text(header.classType, 64)
        .u32(header.valueSize)
        .u32(header.slotSize)
        .u32(header.maxSlots)
        .u32(header.hash.value_or(checksum()))
        .u32(header.occupiedSlots)
        .u32(header.freeHead)
        .u32(header.mappedVersion)
        .u32(header.mappedCount.value_or(static_cast<std::uint32_t>(slotImages.size())))
        .slot(lookaside, header.slotSize);
    for (SlotImage const& slot : slotImages) {
        bytes.slot(slot, header.slotSize);
    }
    return bytes.take();
}

std::string TableImage::file(TableFile which) const
{
    std::string bytes = builtFile(which);
    for (Edit const& edit : edits_) {
        if (edit.file != which) {
            continue;
        }
        if (!edit.bytes) {
            bytes.resize(edit.position);
            continue;
        }
        bytes.resize(std::max<std::size_t>(bytes.size(), edit.position + edit.bytes->size()));
        bytes.replace(edit.position, edit.bytes->size(), *edit.bytes);
    }
    return bytes;
}

void TableImage::writeTo(std::string const& directory) const
{
    std::filesystem::create_directories(directory);
    for (TableFile const which : allTableFiles) {
        std::filesystem::remove(directory + "/" + fileName(which));
    }
    for (TableFile const which : allTableFiles) {
        if (std::find(missing_.begin(), missing_.end(), which) != missing_.end()) {
            continue;
        }
        std::string const path = directory + "/" + fileName(which);
        std::string const bytes = file(which);
        std::ofstream stream(path, std::ios::binary);
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!stream.flush()) {
            throw std::runtime_error("cannot write " + path);
        }
    }
}

}  // namespace QuaskTesting
