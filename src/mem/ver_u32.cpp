#include "mem/ver_u32.h"

namespace Mem {

std::ostream& operator<<(std::ostream& out, VerU32 const& pair)
{
    return out << std::hex << pair.version << ":" << std::dec << pair.value;
}

}  // namespace Mem
