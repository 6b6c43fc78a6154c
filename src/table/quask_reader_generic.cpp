#include "table/quask_reader_generic.h"

#include "table/attach_together.h"

namespace Quask {

QuaskReaderGeneric::QuaskReaderGeneric(std::string const& tableName)
    : Debuggable("Quask-" + tableName),
      rootPath(*handler, tableName, false),
      buckets(*handler, rootPath),
      slots(*handler, rootPath, statistics)
{}

QuaskReaderGeneric::~QuaskReaderGeneric() = default;

bool QuaskReaderGeneric::attach()
{
    return attachTogether(
        *handler, [this] { return attachOnce(); }, *this);
}

bool QuaskReaderGeneric::attachOnce()
{
    return buckets.attach() && slots.attach();
}

void QuaskReaderGeneric::detach()
{
    buckets.detach();
    slots.detach();
}

bool QuaskReaderGeneric::validate(std::string& error)
{
    if (!buckets.validate(error)) {
        return false;
    }
    statistics = {};
    chainRestarts_ = 0;
    return slots.validate(error, valueFormat_);
}

}  // namespace Quask
