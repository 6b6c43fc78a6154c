#pragma once

#include <fstream>
#include <ostream>
#include <string>

#include "base/debuggable.h"
#include "report/quask_textify.h"

namespace Quask {

// What all reports share: where their text goes, the scanner's channel, and the table scan. One job
// per scanner, after initialize(). One thread.
class QuaskScannerBase : public Dovan::Debuggable
{
public:
    // `reportFile` is the file that receives the report; empty for standard output. `table` is the
    // table's path below the root directory, or null for a report on all tables; it is not copied
    // and must outlive the scanner.
    QuaskScannerBase(std::string const& reportFile, char const* table);
    ~QuaskScannerBase() override;

    // Chooses the output, and empties or creates the file. False, with a line on standard error,
    // when it cannot be opened.
    bool initialize();

    // Prints the table's elements, one line per bucket, then how often the walk met a value being
    // rewritten and a chain being changed. 0, or 1 with a line on standard error when the table
    // cannot be read. Whatever the walk throws passes through, with the lines of the buckets
    // finished before on the output.
    int doScan(QuaskTextify::Style style, bool printEmpty);

protected:
    // A null table name is the empty name.
    std::string tableNameText() const;

    // Closes the report's file, if it has one.
    void closeOutput();

    char const* tableName;
    std::string outputFile;
    std::ostream* out = nullptr;  // standard output or fileStream; set by initialize()
    std::ofstream fileStream;

private:
    class MyScanner;
};

}  // namespace Quask
