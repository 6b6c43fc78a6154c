#include "report/quask_scanner_base.h"

#include <iostream>
#include <ostream>

namespace Quask {

QuaskScannerBase::QuaskScannerBase(std::string const& reportFile, char const* table)
    : Debuggable("QuaskScanner"), tableName(table), outputFile(reportFile)
{}

QuaskScannerBase::~QuaskScannerBase() = default;

bool QuaskScannerBase::initialize()
{
    if (outputFile.empty()) {
        out = &std::cout;
        return true;
    }
    fileStream.open(outputFile, std::ios::out | std::ios::trunc);
    if (!fileStream.good()) {
        std::cerr << "Error opening " << outputFile << std::endl;
        return false;
    }
    out = &fileStream;
    return true;
}

std::string QuaskScannerBase::tableNameText() const
{
    return tableName == nullptr ? std::string() : std::string(tableName);
}

void QuaskScannerBase::closeOutput()
{
    if (fileStream.is_open()) {
        fileStream.close();
    }
}

}  // namespace Quask
