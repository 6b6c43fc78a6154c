#include "cli/scanner_output.h"

#include <iostream>

namespace Quask {

bool initialize(QuaskScannerBase& scanner, char const* scannerName)
{
    if (scanner.initialize()) {
        return true;
    }
    std::cerr << "Failed to initialize " << scannerName << "." << std::endl;
    return false;
}

}  // namespace Quask
