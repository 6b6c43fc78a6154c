#pragma once

#include <string>

#include "report/quask_scanner_base.h"
#include "support/root_path.h"
#include "table/quask_reader_generic.h"
#include "table/vandral_reader_generic.h"

namespace Quask {

namespace QuaskTest {

// The four headers as text, whatever they hold. Precondition: both readers are attached.
void getHeaders(QuaskReaderGeneric const& reader, VandralReaderGeneric const& vandral,
                std::string& buckets, std::string& slots, std::string& primary,
                std::string& secondary);

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
    void printHeaders(RootPath const& rootPath, std::string const& buckets,
                      std::string const& slots, std::string const& primary,
                      std::string const& secondary);
};

}  // namespace Quask
