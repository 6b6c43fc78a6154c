#pragma once

#include <cstddef>

// The table files that are mapped at the moment, for the one moment when that matters: a load from
// a page that another process has cut off its file raises SIGBUS. Then what was printed so far is
// written out, one line on standard error names the file, and the process ends with status 1. A
// SIGBUS for any other reason ends the process as it would without this.
namespace Mem::MappedFiles {

// `path` and the mapping must stay valid until remove(address). At most 16 files at a time, four
// times what the tool maps; a further one is left unwatched.
void add(char const* path, void const* address, std::size_t size);

void remove(void const* address);

}  // namespace Mem::MappedFiles
