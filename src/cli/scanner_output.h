#pragma once

#include "report/quask_scanner_base.h"

namespace Quask {

// Chooses the scanner's output; false, with the scanner's name on standard error, when it cannot.
bool initialize(QuaskScannerBase& scanner, char const* scannerName);

}  // namespace Quask
