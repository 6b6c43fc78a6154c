#include "report/scan_preparation.h"

#include <iostream>
#include <sstream>

#include "base/exception.h"
#include "mem/atomics.h"

namespace Quask {
namespace {

// As prepareScan(), but for the line on standard error that every failure has.
bool attachAndCheck(QuaskReaderGeneric& reader, std::string const& name, std::ostream& reasons)
{
    if (!Mem::Atomics::checkCpuSupport()) {
        std::cerr << "Hardware does not support Atomics" << std::endl;
        return false;
    }
    if (!reader.attach()) {
        return false;
    }
    std::string error;
    if (!reader.validate(error)) {
        reasons << "Quask " << name << " validation failed: " << error << std::endl;
        return false;
    }
    return true;
}

}  // namespace

bool prepareScan(QuaskReaderGeneric& reader, std::string const& name, std::ostream& reasons)
{
    if (!attachAndCheck(reader, name, reasons)) {
        std::cerr << "Error attaching to Quask " << name << std::endl;
        return false;
    }
    return true;
}

void failForValueBuffer(Dovan::Platform::DebugHandler& handler, unsigned valueSize,
                        unsigned fileSize)
{
    std::ostringstream message;
    message << "QuaskScannerBase::doScan() no buffer for a value of size: " << valueSize
            << " slot file size: " << fileSize;
    Dovan::logAndThrow<CorruptionDetectedException>(handler, message.str());
}

}  // namespace Quask
