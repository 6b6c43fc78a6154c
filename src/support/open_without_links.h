#pragma once

#include <string>

#include "base/descriptor.h"

namespace Mem {

// Opens the file `path` with these flags of open() and O_CLOEXEC, and follows no symbolic link: not
// in the last component and in no directory below the root directory, their owner may put one
// there at any time. The root directory itself may be reached through links; so may the directory
// of a file that does not lie below it. None, with errno set, when that fails: ELOOP or ENOTDIR for
// a link. With O_PATH a link in the last place may be what is opened.
Dovan::Descriptor openWithoutLinks(std::string const& path, int flags);

}  // namespace Mem
