#include "support/table_writer.h"

#include <algorithm>
#include <stdexcept>

#include <unistd.h>

#include "support/shared_store.h"
#include "support/table_files.h"

namespace QuaskTesting {
namespace {

using namespace SharedStore;

constexpr auto relaxed = std::memory_order_relaxed;
constexpr auto release = std::memory_order_release;

std::string path(std::string const& directory, TableFile file)
{
    return directory + "/" + fileName(file);
}

// Makes the files of a table that has no slots yet; the directory.
std::string const& makeEmptyTable(std::string const& directory, TableShape const& shape)
{
    auto const pid = static_cast<std::uint32_t>(getpid());
    std::uint32_t const orvik = std::uint32_t(shape.instanceId) << 16 | (pid & 0xFFFF);
    TableImage image = TableImage::of(shape.valueType, shape.valueSize).buckets(shape.buckets);
    image.bucketsHeader.orvik = orvik;
    image.bucketsHeader.ownerPid = pid;
    image.slotsHeader.orvik = orvik;
    image.slotsHeader.classType = shape.classType;
    image.slotsHeader.maxSlots = shape.maxSlots;
    image.vandral1.orvik = orvik;
    image.vandral2.orvik = orvik;
    image.writeTo(directory);
    return directory;
}

}  // namespace

TableWriter::TableWriter(std::string const& directory, TableShape const& shape)
    : buckets_(path(makeEmptyTable(directory, shape), TableFile::buckets)),
      slots_(path(directory, TableFile::slots)),
      vandral1_(path(directory, TableFile::vandral1))
{
    openFiles();
    grow(shape.slots);
}

TableWriter::TableWriter(std::string const& directory) : TableWriter(BeforeTakeOver(), directory)
{
    takeOver();
}

TableWriter::TableWriter(BeforeTakeOver, std::string const& directory)
    : buckets_(path(directory, TableFile::buckets)),
      slots_(path(directory, TableFile::slots)),
      vandral1_(path(directory, TableFile::vandral1))
{
    openFiles();
}

void TableWriter::takeOver()
{
    finishUpdate();
    mendLists();
    auto const pid = static_cast<std::uint32_t>(getpid());
    std::byte* const ownerPid = bucketsStart_ + BucketsOffset::ownerPid;
    if (loadOwn32(ownerPid) != pid) {
        store32(ownerPid, pid, relaxed);
    }
}

void TableWriter::openFiles()
{
    numBuckets_ = buckets_.read32(BucketsOffset::numBuckets);
    valueSize_ = slots_.read32(SlotsOffset::valueSize);
    slotSize_ = slots_.read32(SlotsOffset::slotSize);
    maxSlots_ = slots_.read32(SlotsOffset::maxSlots);
    std::uint32_t const count = slots_.read32(SlotsOffset::mappedSlots + 4);
    if (slotSize_ != slotSizeFor(valueSize_) || count > maxSlots_ ||
        slots_.size() < slotsFileSize(slotSize_, count) ||
        buckets_.size() < BucketsOffset::link(numBuckets_) ||
        vandral1_.size() < VandralOffset::headerSize) {
        throw std::runtime_error("no table that a writer left behind");
    }
    bucketsStart_ = buckets_.map(BucketsOffset::link(numBuckets_));
    slotsStart_ = slots_.map(slotsFileSize(slotSize_, maxSlots_));
    vandralStart_ = vandral1_.map(VandralOffset::headerSize);
}

std::uint32_t TableWriter::insert(std::uint32_t bucket, std::string_view value)
{
    std::byte* const head = bucketLink(bucket);
    checkValue(value);
    if (freeHead() == noSlot) {
        if (slots() == maxSlots_) {
            throw std::length_error("the table is full");
        }
        grow(slots() > maxSlots_ / 2 ? maxSlots_ : std::max(1u, 2 * slots()));
    }
    std::uint32_t const slot = freeHead();
    std::byte* const next = record(slot);
    std::byte* const sequence = next + RecordOffset::sequence;

    setFreeHead(pairValue(loadOwn64(next)));
    releaseFence();  // 6
    storeBytes(valueOf(slot), value.data(), value.size());
    store32(sequence, (loadOwn32(sequence) + 4) & ~lookasideBit, release);  // 4
    relink(next, pairValue(loadOwn64(head)));                               // 7
    relink(head, slot);                                                     // 1
    setOccupiedSlots(occupiedSlots() + 1);
    return slot;
}

void TableWriter::update(std::uint32_t slot, std::string_view value)
{
    checkSlot(slot);
    checkValue(value);
    std::byte* const sequence = record(slot) + RecordOffset::sequence;
    std::byte* const lookaside = slotsWord(SlotsOffset::lookaside);
    std::byte* const lookasideSequence = lookaside + RecordOffset::sequence;
    std::uint32_t const before = loadOwn32(sequence);

    releaseFence();  // 5
    copyBytes(lookaside + RecordOffset::value, valueOf(slot), valueSize_);
    store32(lookasideSequence, loadOwn32(lookasideSequence) + 4, release);
    store32(sequence, (before + 4) | lookasideBit, release);  // 2
    releaseFence();                                           // 3
    storeBytes(valueOf(slot), value.data(), value.size());
    store32(sequence, (before + 8) & ~lookasideBit, release);  // 4
}

void TableWriter::remove(std::uint32_t bucket, std::uint32_t slot)
{
    checkSlot(slot);
    std::byte* link = bucketLink(bucket);
    for (;;) {
        std::uint32_t const index = pairValue(loadOwn64(link));
        if (index == slot) {
            break;
        }
        if (index == noSlot) {
            throw std::invalid_argument("the slot is not in the bucket's chain");
        }
        link = record(index);
    }
    relink(link, pairValue(loadOwn64(record(slot))));
    putIntoFreeList(slot);
    setOccupiedSlots(occupiedSlots() - 1);
}

void TableWriter::grow(std::uint32_t slots)
{
    std::uint32_t const count = this->slots();
    if (slots <= count) {
        return;
    }
    if (slots > maxSlots_) {
        throw std::length_error("more slots than the table may ever have");
    }
    slots_.lengthen(slotsFileSize(slotSize_, slots));

    // Nothing leads readers to the new slots yet. A writer that died here may have left its stores.
    for (std::uint32_t slot = count; slot < slots; ++slot) {
        std::byte* const next = record(slot);
        relink(next, slot + 1 < slots ? slot + 1 : noSlot);
        store32(next + RecordOffset::writersWord, 0xFFFFFFFF, relaxed);
    }
    std::uint32_t const head = freeHead();
    if (head != noSlot) {
        std::byte* last = record(head);
        for (std::uint32_t slot = head; slot != noSlot; slot = pairValue(loadOwn64(last))) {
            last = record(slot);
        }
        relink(last, count);
    }
    relink(slotsWord(SlotsOffset::mappedSlots), slots);  // 1, 8
    if (head == noSlot) {
        setFreeHead(count);
    }
}

void TableWriter::setMinSequence(std::uint64_t sequence)
{
    store64(vandralStart_ + VandralOffset::minSequence, sequence, release);
    notify();
}

void TableWriter::setNumReaders(std::uint32_t count)
{
    store32(vandralStart_ + VandralOffset::numReaders, count, release);
    notify();
}

void TableWriter::setCurrentTable(std::uint32_t table)
{
    relink(vandralStart_ + VandralOffset::currentTable, table);
    notify();
}

void TableWriter::notify()
{
    std::byte* const notifications = vandralStart_ + VandralOffset::notifications;
    relink(notifications, pairValue(loadOwn64(notifications)) + 1);  // 8
}

void TableWriter::setSlotsOrvik(std::uint32_t orvik)
{
    store32(slotsWord(SlotsOffset::orvik), orvik, release);
    changeVersionOfSlots();
}

void TableWriter::setLookasideWord(std::uint32_t word)
{
    store32(slotsWord(SlotsOffset::lookaside + RecordOffset::writersWord), word, release);
    changeVersionOfSlots();
}

void TableWriter::changeVersionOfSlots()
{
    relink(slotsWord(SlotsOffset::mappedSlots), slots());  // 8
}

std::uint32_t TableWriter::slots() const
{
    return pairValue(loadOwn64(slotsWord(SlotsOffset::mappedSlots)));
}

std::uint32_t TableWriter::occupiedSlots() const
{
    return loadOwn32(slotsWord(SlotsOffset::occupiedSlots));
}

TableWriter::Place TableWriter::placeOf(void const* address) const
{
    if (slots_.holds(address)) {
        return {TableFile::slots, slots_.offsetOf(address)};
    }
    if (buckets_.holds(address)) {
        return {TableFile::buckets, buckets_.offsetOf(address)};
    }
    if (vandral1_.holds(address)) {
        return {TableFile::vandral1, vandral1_.offsetOf(address)};
    }
    throw std::logic_error("an address outside the table");
}

std::byte* TableWriter::bucketLink(std::uint32_t bucket) const
{
    if (bucket >= numBuckets_) {
        throw std::out_of_range("no such bucket");
    }
    return bucketsStart_ + BucketsOffset::link(bucket);
}

std::byte* TableWriter::record(std::uint32_t slot) const
{
    return slotsWord(SlotsOffset::slot(slotSize_, slot));
}

std::byte* TableWriter::valueOf(std::uint32_t slot) const
{
    return record(slot) + RecordOffset::value;
}

void TableWriter::checkSlot(std::uint32_t slot) const
{
    if (slot >= slots()) {
        throw std::out_of_range("no such slot");
    }
}

void TableWriter::checkValue(std::string_view value) const
{
    if (value.size() != valueSize_) {
        throw std::invalid_argument("a value of another size");
    }
}

std::uint32_t TableWriter::freeHead() const
{
    return loadOwn32(slotsWord(SlotsOffset::freeHead));
}

void TableWriter::setFreeHead(std::uint32_t slot)
{
    store32(slotsWord(SlotsOffset::freeHead), slot, release);  // 8
}

void TableWriter::setOccupiedSlots(std::uint32_t count)
{
    store32(slotsWord(SlotsOffset::occupiedSlots), count, release);  // 8
}

void TableWriter::putIntoFreeList(std::uint32_t slot)
{
    relink(record(slot), freeHead());  // 7
    setFreeHead(slot);
}

}  // namespace QuaskTesting
