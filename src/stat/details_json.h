#pragma once

#include <optional>
#include <string>

#include "stat/details.h"
#include "stat/walk.h"

namespace Quask::Stat {

// One table in depth as a JSON object over several lines, ASCII whatever its names are. The figures
// are those of the text, with null for what is not available, such as a walk that has failed.
std::string detailsJson(TableDetails const& details, std::optional<Walk> const& walk);

}  // namespace Quask::Stat
