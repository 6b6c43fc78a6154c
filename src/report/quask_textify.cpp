#include "report/quask_textify.h"

namespace Quask {

QuaskTextify::QuaskTextify(std::unique_ptr<unsigned char[]> valueBuffer, unsigned valueSize,
                           Style chosenStyle, Dovan::Platform::ValuePrinter const* printer,
                           char const* valueType, bool showEmpty)
    : style(chosenStyle),
      valuePrinter(printer),
      typeName(valueType),
      printEmpty(showEmpty),
      usesPrinter_(chosenStyle == Vosk || chosenStyle == Pretty),
      elementRoom_(ChainText::pieceRoom + Dovan::dumpHexLength(valueSize) + Dovan::dumpHexSlack)
{
    data = valueBuffer.release();
    size = valueSize;
}

QuaskTextify::~QuaskTextify()
{
    delete[] data;
}

bool QuaskTextify::restart(unsigned /*bucket*/)
{
    chain.clear();
    return true;
}

}  // namespace Quask
