#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "finder/table_finder.h"
#include "support/private_root.h"
#include "support/recording_handler.h"

namespace QuaskTesting {

// A root directory of the test's own, and searches of it that log nothing.
class TableFinderFixture : public testing::Test
{
protected:
    using Names = std::vector<std::string>;

    // Makes a table of one file for each name.
    void makeTables(Names const& names) const
    {
        for (std::string const& name : names) {
            root.writeFile(name + "/slots", "x");
        }
    }

    // What a search finds, in the order of the file system.
    Names find(std::string const& expr)
    {
        Quask::TableFinder finder(handler);
        EXPECT_TRUE(finder.find(expr.c_str()));
        return {finder.begin(), finder.end()};
    }

    Names findSorted(std::string const& expr)
    {
        Names names = find(expr);
        std::sort(names.begin(), names.end());
        return names;
    }

    PrivateRoot root;
    RecordingHandler handler{-1};
};

}  // namespace QuaskTesting
