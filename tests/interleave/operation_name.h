#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include "interleave/small_table.h"

namespace QuaskTesting {

// Names the tests made for each operation: "UpdateTheHeadOfA" for "update the head of A".
inline std::string testName(testing::TestParamInfo<Operation> const& info)
{
    std::string name;
    bool capital = true;
    for (char const c : std::string(info.param.name)) {
        if (c != ' ') {
            name += capital ? static_cast<char>(std::toupper(c)) : c;
        }
        capital = c == ' ';
    }
    return name;
}

}  // namespace QuaskTesting
