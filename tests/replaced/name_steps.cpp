#include "replaced/name_steps.h"

#include <utility>

#include "mem/schedule_point.h"

namespace {

QuaskTesting::NameSteps* current = nullptr;

void step()
{
    if (current != nullptr) {
        current->beforeStep();
    }
}

}  // namespace

namespace QuaskTesting {

NameSteps::NameSteps(std::function<void(unsigned step)> action) : action_(std::move(action))
{
    current = this;
}

NameSteps::~NameSteps()
{
    current = nullptr;
}

}  // namespace QuaskTesting

void Mem::schedulePoint(void const* /*address*/, std::size_t /*size*/, std::memory_order /*order*/)
{}
void Mem::scheduleFence() {}
void Mem::scheduleFileSize()
{
    step();
}
void Mem::scheduleNameUse()
{
    step();
}
