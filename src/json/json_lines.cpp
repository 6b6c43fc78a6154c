#include "json/json_lines.h"

#include <utility>

namespace Quask::Json {

JsonLines::JsonLines(std::unique_ptr<unsigned char[]> buffer, unsigned valueSize,
                     std::optional<Dovan::Platform::ValueType> const& valueType, bool showEmpty,
                     std::ostream& output)
    : buffer_(std::move(buffer)),
      valueType_(valueType),
      printEmpty_(showEmpty),
      lines_(output, line_),
      writer_(line_)
{
    data = buffer_.get();
    size = valueSize;
}

bool JsonLines::restart(unsigned /*bucket*/)
{
    line_.clear();
    return true;
}

}  // namespace Quask::Json
