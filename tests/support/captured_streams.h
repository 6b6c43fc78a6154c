#pragma once

#include <iostream>
#include <sstream>
#include <string>

namespace QuaskTesting {

// Takes what this process writes to std::cout and std::cerr while it lives.
class CapturedStreams
{
public:
    CapturedStreams() : coutBefore_(std::cout.rdbuf(&out_)), cerrBefore_(std::cerr.rdbuf(&err_)) {}
    CapturedStreams(CapturedStreams const&) = delete;
    CapturedStreams& operator=(CapturedStreams const&) = delete;
    ~CapturedStreams()
    {
        std::cout.rdbuf(coutBefore_);
        std::cerr.rdbuf(cerrBefore_);
    }

    std::string out() const { return out_.str(); }
    std::string err() const { return err_.str(); }

private:
    std::stringbuf out_;
    std::stringbuf err_;
    std::streambuf* coutBefore_;
    std::streambuf* cerrBefore_;
};

}  // namespace QuaskTesting
