#pragma once

#include <string>

#include "report/quask_scanner_base.h"
#include "support/root_path.h"
#include "table/lookaside_value.h"
#include "table/quask_reader_generic.h"
#include "table/vandral_reader_generic.h"

namespace Quask {

namespace QuaskTest {

// The four headers, whatever they hold. What a value's text can be many times as large as is kept
// as it is.
struct Headers
{
    std::string buckets;
    std::string slots;  // all but the lookaside value and its newline
    LookasideValue lookasideValue;
    std::string primary;
    std::string secondary;
};

// Precondition: both readers are attached.
Headers getHeaders(QuaskReaderGeneric const& reader, VandralReaderGeneric const& vandral);

}  // namespace QuaskTest

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
    void printHeaders(RootPath const& rootPath, QuaskTest::Headers const& headers);
};

}  // namespace Quask
