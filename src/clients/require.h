#pragma once

namespace Quask {

// Ends the program by abort() when a condition that the client scanner relies on does not hold,
// with the condition's text on standard error, in every kind of build.
void require(bool holds, char const* condition);

}  // namespace Quask
