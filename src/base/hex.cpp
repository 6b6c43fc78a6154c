#include "base/hex.h"

namespace Dovan {

std::string dumpHex(void const* data, unsigned size)
{
    std::string text(dumpHexLength(size) + dumpHexSlack, '\0');
    char const* const end = writeDumpHex(text.data(), data, size);
    text.resize(static_cast<std::size_t>(end - text.data()));
    return text;
}

}  // namespace Dovan
