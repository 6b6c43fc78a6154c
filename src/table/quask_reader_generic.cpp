#include "table/quask_reader_generic.h"

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
    return buckets.attach() && slots.attach();
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
