#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/debug_handler.h"

namespace Quask::Util {

// The 32-bit FNV-1a checksum of `length` bytes.
std::uint32_t hash(char const* bytes, unsigned length);

// The eight bytes of a magic number in file order; a byte that is not printable ASCII becomes ".".
std::string decodeMagic(unsigned long long magic);

// Splits a creator stamp: the process id is its low half, the instance id its high half.
void decodeOrvik(unsigned orvik, unsigned short& pid, unsigned short& instanceId);

// Whether a directory entry of this bare name makes its directory a table: true for the four files
// that the tool maps. The file "orvik" belongs to a table but makes none.
bool isQuaskFile(Dovan::Platform::DebugHandler& handler, std::string const& fileName);

// What is in the open file `descriptor` from its position to its end, `most` bytes at most;
// empty when it cannot be read. A file in /proc may fail at any time once its process has ended.
std::string readToEnd(int descriptor, std::size_t most);

// As many bytes of a command line are read. The kernel starts no program with more than 6 MiB of
// arguments, but a process may have any part of its memory shown as its command line, at no cost:
// untouched pages are read as zeros.
inline constexpr std::size_t longestCmdline = std::size_t{8} << 20;

// The command line of a process, its arguments separated by spaces; empty when it cannot be read.
std::string readCmdline(Dovan::Platform::DebugHandler& handler, int pid);

}  // namespace Quask::Util
