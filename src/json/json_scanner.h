#pragma once

#include "report/quask_scanner_base.h"

namespace Quask::Json {

// The scan and the header report of one table as JSON. One job per scanner, after initialize(). One
// thread.
class JsonScanner : public QuaskScannerBase
{
public:
    using QuaskScannerBase::QuaskScannerBase;
    ~JsonScanner() override;

    // Prints a line for each bucket that has elements, with `printEmpty` for every one, then a line
    // with the counters. 0, or 1 with the reason on standard error when the table cannot be read.
    // Whatever the walk throws passes through, with the lines of the buckets finished before on the
    // output, and without the last line.
    int doScanJson(bool printEmpty);

    // Prints one object in one line: the headers of the table's four files as their writers left
    // them. 0, or 1 with a line on standard error, and nothing printed, when a file cannot be
    // attached.
    int doGetHeadersJson();
};

}  // namespace Quask::Json
