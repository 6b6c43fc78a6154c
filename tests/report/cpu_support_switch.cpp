#include "report/cpu_support_switch.h"

#include "mem/atomics.h"

bool Mem::Atomics::checkCpuSupport()
{
    return QuaskTesting::cpuSupport;
}
