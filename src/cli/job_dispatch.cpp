#include "cli/job_dispatch.h"

#include <iostream>

#include "report/quask_header_scanner.h"

namespace Quask {
namespace {

// Chooses the scanner's output; false, with the scanner's name on standard error, when it cannot.
bool initialize(QuaskScannerBase& scanner, char const* scannerName)
{
    if (scanner.initialize()) {
        return true;
    }
    std::cerr << "Failed to initialize " << scannerName << "." << std::endl;
    return false;
}

}  // namespace

int runAllTablesJob(Options const& /*options*/)
{
    std::cerr << "The client reports are not built yet." << std::endl;
    return 1;
}

int runSingleTableJob(Options const& options, char const* tableName)
{
    QuaskHeaderScanner scanner(options.outputFile, tableName);
    if (!initialize(scanner, "QuaskHeaderScanner")) {
        return 1;
    }
    return options.showHeaders ? scanner.doGetHeaders()
                               : scanner.doScan(options.style, options.printEmpty);
}

}  // namespace Quask
