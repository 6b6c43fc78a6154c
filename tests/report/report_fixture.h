#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "support/captured_streams.h"
#include "support/private_root.h"
#include "support/table_files.h"

namespace QuaskTesting {

// A table in files and what a job on it prints.
class ReportFixture : public testing::Test
{
protected:
    ~ReportFixture() override { unsetenv("DOVAN_DEBUG"); }

    // What `job` prints goes to `out` and `err`, also when it throws.
    template <typename Job>
    int run(Job&& job)
    {
        struct Keep
        {
            ~Keep()
            {
                fixture->out = streams.out();
                fixture->err = streams.err();
            }
            ReportFixture* fixture;
            CapturedStreams streams;
        };
        Keep const keep{this, {}};
        return job();
    }

    void write() { image.writeTo(root, "feed/eq"); }

    static std::string contentsOf(std::string const& path)
    {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    PrivateRoot root;
    std::string const reportPath = root.path() + "/report";
    TableImage image = TableImage::of("std::int32_t", 4);
    std::string out;
    std::string err;
};

}  // namespace QuaskTesting
