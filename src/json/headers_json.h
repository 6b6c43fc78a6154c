#pragma once

#include <ostream>
#include <string>

#include "report/table_headers.h"

namespace Quask::Json {

// Prints the headers of the table of this name as one object in one line, with flags for what a
// sound header does not have. The lookaside value, which may be large, is printed in pieces.
void printHeaders(std::string const& name, TableHeaders const& headers, std::ostream& out);

}  // namespace Quask::Json
