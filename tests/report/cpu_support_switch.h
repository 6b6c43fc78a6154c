#pragma once

namespace QuaskTesting {

// What Mem::Atomics::checkCpuSupport() says in this program, in the place of the real one.
inline bool cpuSupport = true;

}  // namespace QuaskTesting
