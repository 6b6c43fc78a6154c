#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "support/child_process.h"

namespace QuaskTesting {

// A process that has files mapped, each as FILE:r or FILE:rw, from the constructor's return on and
// until the object's end. Test programs that use it know where the program is.
class MappingClient : public ChildProcess
{
public:
    explicit MappingClient(std::vector<std::string> const& arguments)
        : MappingClient(MAPPING_CLIENT, arguments)
    {}

    // Started from a copy of the program.
    MappingClient(std::string const& program, std::vector<std::string> const& arguments)
        : ChildProcess(command(program, arguments))
    {
        if (readLine() != "ready") {
            throw std::runtime_error("a client cannot map its files: " + finish().err);
        }
    }

private:
    static Command command(std::string const& program, std::vector<std::string> const& arguments)
    {
        Command command;
        command.words = arguments;
        command.words.insert(command.words.begin(), program);
        return command;
    }
};

}  // namespace QuaskTesting
