#include "json/jobs.h"

#include "cli/scanner_output.h"
#include "json/json_client_scanner.h"
#include "json/json_scanner.h"

namespace Quask::Json {

// In messages the scanners have the names that they have in those of quask.

int runAllTablesJob(Options const& options)
{
    JsonClientScanner scanner(options.outputFile, nullptr);
    return initialize(scanner, "QuaskClientScanner") ? scanner.doGetAllClientInfoJson() : 1;
}

int runSingleTableJob(Options const& options, char const* tableName)
{
    if (options.showWho) {
        JsonClientScanner scanner(options.outputFile, tableName);
        return initialize(scanner, "QuaskClientScanner") ? scanner.doGetClientInfoJson() : 1;
    }
    JsonScanner scanner(options.outputFile, tableName);
    if (!initialize(scanner, "QuaskHeaderScanner")) {
        return 1;
    }
    return options.showHeaders ? scanner.doGetHeadersJson()
                               : scanner.doScanJson(options.printEmpty);
}

}  // namespace Quask::Json
