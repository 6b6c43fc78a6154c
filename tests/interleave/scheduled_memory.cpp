#include "interleave/scheduled_memory.h"

#include <algorithm>
#include <sstream>

#include "mem/schedule_point.h"

namespace QuaskTesting {
namespace {

ScheduledMemory* scheduled = nullptr;

}  // namespace

std::string decimal(BigCount count)
{
    std::string digits;
    do {
        digits += static_cast<char>('0' + static_cast<int>(count % 10));
        count /= 10;
    } while (count != 0);
    std::reverse(digits.begin(), digits.end());
    return digits;
}

void ScheduledMemory::begin()
{
    replay_.restore();
    loads_.clear();
    sawNothingNew_ = 0;
    restart();
}

void ScheduledMemory::beforeLoad(void const* address, std::size_t size, std::memory_order order)
{
    auto const [file, offset] = placeOf(address);
    show({file, offset, size}, address, order);
}

void ScheduledMemory::note(Place const& place, Moment moment, bool seesNews)
{
    loads_.push_back({place, moment});
    sawNothingNew_ = seesNews ? 0 : sawNothingNew_ + 1;
    if (sawNothingNew_ > endless_) {
        throw EndlessReading();
    }
}

void ScheduledMemory::noteFileSize(Moment moment, bool seesNews)
{
    note({TableFile::slots, 0, 0}, moment, seesNews);
}

std::size_t ScheduledMemory::lastLoadOf(Place const& place, std::size_t end) const
{
    do {
        --end;
    } while (loads_.at(end).place != place);
    return end;
}

std::string ScheduledMemory::describe() const
{
    std::ostringstream text;
    for (Moment moment = 1; moment <= history_.last(); ++moment) {
        text << "  store " << moment << ": " << history_.storeBefore(moment) << '\n';
    }
    for (Load const& load : loads_) {
        text << "  after store " << load.moment << " the reader ";
        if (load.place.size == 0) {
            text << "finds the slot file "
                 << history_.contents(TableFile::slots, load.moment).size() << " bytes long\n";
        } else {
            text << "loads " << fileName(load.place.file) << '@' << load.place.offset << ": 0x"
                 << std::hex << history_.wordAt(load.place, load.moment) << std::dec << '\n';
        }
    }
    return text.str();
}

SchedulesLoads::SchedulesLoads(ScheduledMemory& memory, ScheduledMemory::PlaceOf placeOf)
{
    memory.placeOf = std::move(placeOf);
    scheduled = &memory;
}

SchedulesLoads::~SchedulesLoads()
{
    scheduled->placeOf = nullptr;
    scheduled = nullptr;
}

}  // namespace QuaskTesting

namespace Mem {

void schedulePoint(void const* address, std::size_t size, std::memory_order order)
{
    if (QuaskTesting::scheduled != nullptr) {
        QuaskTesting::scheduled->beforeLoad(address, size, order);
    }
}

void scheduleFence()
{
    if (QuaskTesting::scheduled != nullptr) {
        QuaskTesting::scheduled->beforeFence();
    }
}

void scheduleFileSize()
{
    if (QuaskTesting::scheduled != nullptr) {
        QuaskTesting::scheduled->beforeFileSize();
    }
}

void scheduleNameUse() {}

}  // namespace Mem
