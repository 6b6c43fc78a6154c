#include "cli/job_dispatch.h"

#include "cli/scanner_output.h"
#include "clients/quask_client_scanner.h"
#include "report/quask_header_scanner.h"
#include "report/quask_scanner_base.h"

namespace Quask {

int runAllTablesJob(Options const& options)
{
    QuaskClientScanner scanner(options.outputFile, nullptr);
    return initialize(scanner, "QuaskClientScanner") ? scanner.doGetAllClientInfo() : 1;
}

int runSingleTableJob(Options const& options, char const* tableName)
{
    if (options.showWho) {
        QuaskClientScanner scanner(options.outputFile, tableName);
        return initialize(scanner, "QuaskClientScanner") ? scanner.doGetClientInfo() : 1;
    }
    // The table scan runs on a header scanner, too: it belongs to the base of all scanners.
    QuaskHeaderScanner scanner(options.outputFile, tableName);
    if (!initialize(scanner, "QuaskHeaderScanner")) {
        return 1;
    }
    return options.showHeaders ? scanner.doGetHeaders()
                               : scanner.doScan(options.style, options.printEmpty);
}

}  // namespace Quask
