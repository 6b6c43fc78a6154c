#include "base/standard_error.h"

#include <iostream>
#include <string_view>

#include <unistd.h>

#include "base/write_all.h"

namespace Dovan {

StandardError::StandardError() : former_(std::cerr.rdbuf(this)) {}

StandardError::~StandardError()
{
    std::cerr.rdbuf(former_);
}

StandardError::int_type StandardError::overflow(int_type c)
{
    char const one = traits_type::to_char_type(c);
    return xsputn(&one, 1) == 1 ? c : traits_type::eof();
}

std::streamsize StandardError::xsputn(char const* text, std::streamsize count)
{
    return writeAll(STDERR_FILENO, {text, static_cast<std::size_t>(count)}) ? count : 0;
}

}  // namespace Dovan
