#include "base/exception.h"

namespace Dovan {

Exception::Exception(std::string const& message, bool /*flag*/) : message_(message) {}
Exception::~Exception() = default;

char const* Exception::what() const noexcept
{
    return message_.c_str();
}

char const* Exception::name() const
{
    return "Dovan::Exception";
}

std::string Exception::msg() const
{
    return std::string(name()) + "(\"" + message_ + "\")";
}

RuntimeException::~RuntimeException() = default;

char const* RuntimeException::name() const
{
    return "Dovan::RuntimeException";
}

MemoryResourceException::~MemoryResourceException() = default;

char const* MemoryResourceException::name() const
{
    return "Dovan::MemoryResourceException";
}

}  // namespace Dovan

namespace Quask {

CorruptionDetectedException::~CorruptionDetectedException() = default;

char const* CorruptionDetectedException::name() const
{
    return "Quask::CorruptionDetectedException";
}

}  // namespace Quask
