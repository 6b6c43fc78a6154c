#pragma once

#include <streambuf>

namespace Dovan {

// While it lives, std::cerr writes each piece at once to descriptor 2, and waits for one that does
// not block, so that no message is lost. A message that cannot be written is dropped, and the
// process goes on. One object at a time; one thread.
class StandardError final : public std::streambuf
{
public:
    StandardError();
    StandardError(StandardError const&) = delete;
    StandardError& operator=(StandardError const&) = delete;

    // Gives std::cerr its former buffer back.
    ~StandardError() override;

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(char const* text, std::streamsize count) override;

private:
    std::streambuf* const former_;
};

}  // namespace Dovan
