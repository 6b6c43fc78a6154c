#include "mem/atomics.h"

bool Mem::Atomics::checkCpuSupport()
{
    return false;
}
