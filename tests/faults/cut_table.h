#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include "faults/blocked_scan.h"
#include "faults/faults_fixture.h"
#include "support/table_layout.h"

namespace QuaskTesting {

// A table "feed" whose files may be cut short while it is scanned.
class CutTableTest : public FaultsTest
{
protected:
    CutTableTest() { large().writeTo(root, "feed"); }

    void expectEndWhereTheSlotFileIsCut()
    {
        expectEndAtTheCut("slots", SlotsOffset::slot(24, 0) + RecordOffset::value + 4, 24);
    }

    void expectEndWhereTheBucketFileIsCut()
    {
        expectEndAtTheCut("buckets", BucketsOffset::link(1), 8);
    }

    std::string const directory = root.path() + "/feed";

private:
    // The file is cut to half of its length, in pages, during the scan. The bytes that bucket i
    // needs of it end at `end` + i * `step`.
    void expectEndAtTheCut(std::string const& name, std::uint64_t end, std::uint64_t step)
    {
        std::string const whole = quask({"feed"}).out;
        std::string const path = directory + "/" + name;
        std::uint64_t const length = std::filesystem::file_size(path) / 2 / 4096 * 4096;
        BlockedScan scan(command({"feed"}));
        std::filesystem::resize_file(path, length);
        Finished const finished = scan.finish();
        EXPECT_EQ(finished.err,
                  "Quask table file " + path + " was cut short while it was being read\n");
        EXPECT_EQ(finished.exitStatus, 1);
        // The lines of all buckets before the first of which a byte is missing.
        EXPECT_EQ(std::count(finished.out.begin(), finished.out.end(), '\n'),
                  static_cast<std::ptrdiff_t>((length - end) / step + 1));
        EXPECT_EQ(finished.out.back(), '\n');
        EXPECT_TRUE(whole.starts_with(finished.out));
    }
};

}  // namespace QuaskTesting
