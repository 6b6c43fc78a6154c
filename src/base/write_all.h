#pragma once

#include <string_view>

namespace Dovan {

// Writes all of `text` to `descriptor`, however long that takes: it waits for one that does not
// block, and goes on after a signal's handler has returned. False when it cannot be written, with
// the reason in errno; a part of it may have been written then. Safe in a signal handler.
bool writeAll(int descriptor, std::string_view text);

}  // namespace Dovan
