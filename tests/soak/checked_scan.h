#pragma once

#include <string>

#include "support/child_process.h"
#include "support/scan_checker.h"

namespace QuaskTesting {

// Runs a scan and checks its lines while they come. An empty text when the scan ended well, else
// how it ended; only the checker knows what is wrong with lines.
std::string checkedScan(Command command, ScanChecker& checker);

}  // namespace QuaskTesting
