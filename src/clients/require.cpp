#include "clients/require.h"

#include <cstdlib>
#include <iostream>

#include "base/standard_output.h"

namespace Quask {

void require(bool holds, char const* condition)
{
    if (!holds) {
        Dovan::StandardOutput::writeRemainder();
        std::cerr << "QuaskClientScanner: assertion failed: " << condition << std::endl;
        std::abort();
    }
}

}  // namespace Quask
