#include "table/load_by_load.h"

#include <utility>

#include "mem/schedule_point.h"

namespace {

QuaskTesting::LoadByLoad* current = nullptr;

}  // namespace

namespace QuaskTesting {

LoadByLoad::LoadByLoad(std::function<void(unsigned load)> action) : action_(std::move(action))
{
    current = this;
}

LoadByLoad::~LoadByLoad()
{
    current = nullptr;
}

}  // namespace QuaskTesting

void Mem::schedulePoint(void const* /*address*/, std::size_t /*size*/, std::memory_order /*order*/)
{
    if (current != nullptr) {
        current->beforeLoad();
    }
}

void Mem::scheduleFence() {}
void Mem::scheduleFileSize() {}
void Mem::scheduleNameUse() {}
