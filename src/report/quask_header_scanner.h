#pragma once

#include "report/quask_scanner_base.h"
#include "report/table_headers.h"

namespace Quask {

// The header report of one table.
class QuaskHeaderScanner : public QuaskScannerBase
{
public:
    using QuaskScannerBase::QuaskScannerBase;
    ~QuaskHeaderScanner() override;

    // Prints the headers of the table's four files as their writers left them; nothing is
    // validated. 0, or 1 with a line on standard error, and nothing printed, when a file cannot be
    // attached.
    int doGetHeaders();

private:
    void printHeaders(TableHeaders const& headers);
};

}  // namespace Quask
