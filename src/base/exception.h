#pragma once

#include <exception>
#include <string>

namespace Dovan {

// What a lower layer throws when it cannot go on. Nothing catches the family at the top of the
// program: an exception that no layer can cure ends the run with its text on standard error.
class Exception : public std::exception
{
public:
    // `message` is the complete text. `flag` is always true in this system and carries no meaning.
    Exception(std::string const& message, bool flag);
    ~Exception() override;

    // The message alone; valid as long as the exception lives.
    char const* what() const noexcept override;

    // The qualified name of the dynamic class; a string literal.
    virtual char const* name() const;

    // name, then the message in parentheses and double quotes: Dovan::Exception("text").
    std::string msg() const;

private:
    std::string message_;
};

// An operating-system call failed where the caller cannot go on.
class RuntimeException : public Exception
{
public:
    using Exception::Exception;
    ~RuntimeException() override;
    char const* name() const override;
};

// A grown table file could not be mapped again.
class MemoryResourceException : public Exception
{
public:
    using Exception::Exception;
    ~MemoryResourceException() override;
    char const* name() const override;
};

}  // namespace Dovan

namespace Quask {

// The contents of a table file contradict themselves or reach outside the file.
class CorruptionDetectedException : public Dovan::Exception
{
public:
    using Exception::Exception;
    ~CorruptionDetectedException() override;
    char const* name() const override;
};

}  // namespace Quask
