#pragma once

namespace Dovan {

// Keeps descriptors 0 to 2 from being given to files that the program opens: each that is closed
// is taken by one that can be neither read nor written, so that using it still fails.
void reserveStandardDescriptors();

}  // namespace Dovan
