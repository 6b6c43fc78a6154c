// A table that is replaced while a report attaches its files. What is read must have been on disk
// at one moment: the table that was there before, the one that came after it, or, where its files
// were replaced one by one, what was there in between.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "clients/header_figures.h"
#include "replaced/name_steps.h"
#include "report/quask_header_scanner.h"
#include "support/private_root.h"
#include "support/recording_handler.h"
#include "support/table_files.h"
#include "table/quask_reader_generic.h"
#include "table/vandral_reader_generic.h"

namespace {

using QuaskTesting::NameSteps;
using QuaskTesting::PrivateRoot;
using QuaskTesting::TableImage;

// The files in the order in which they are replaced; also that of the digits in a sighting.
std::vector<std::string> const files{"buckets", "slots", "vandral.1", "vandral.2"};

std::string const failed = "failed";

// A table whose headers all say `number`.
TableImage numbered(std::uint32_t number)
{
    TableImage image = TableImage::of("int", 4).buckets(number).slots(8);
    image.slotsHeader.maxSlots = number;
    image.vandral1.notifications = {1, number};
    image.vandral2.notifications = {1, number};
    return image;
}

// A report that attaches the table "feed"; the numbers that its headers said, in the order of the
// files, or `failed`.
using Report = std::string (*)();

std::string scan()
{
    Quask::QuaskReaderGeneric reader("feed");
    if (!reader.attach()) {
        return failed;
    }
    return std::to_string(reader.liveBucketsHeader().numBuckets) +
           std::to_string(reader.liveSlotsHeader().maxSlots);
}

// What follows `label` in `text`, up to the end of the line or a space.
std::string after(std::string const& text, std::string const& label, std::size_t from = 0)
{
    std::size_t const start = text.find(label, from) + label.size();
    return text.substr(start, text.find_first_of(" \n", start) - start);
}

std::string headerReport()
{
    Quask::QuaskHeaderScanner scanner("", "feed");
    scanner.initialize();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    int const status = scanner.doGetHeaders();
    std::string const text = testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    if (status != 0) {
        return failed;
    }
    std::string const notifications = "Notifications: 1:";
    return after(text, "Size: ") + after(text, "Max slots: ") + after(text, notifications) +
           after(text, notifications, text.find("Secondary vandral"));
}

std::string figures()
{
    Quask::QuaskReaderGeneric reader("feed");
    Quask::RootPath const path(reader.channel(), "feed", false);
    Quask::VandralReaderGeneric vandral(reader.channel(), path);
    Quask::Model::QuaskTable table("feed");
    Quask::QuaskTest::populateQuaskTableHeaderInfo(reader, vandral, table);
    Quask::Model::HeaderInfo const& info = table.headerInfo;
    std::string text;
    for (std::uint32_t const figure :
         {info.buckets, info.slots, info.primaryNotifications, info.secondaryNotifications}) {
        text += figure == Quask::Model::HeaderInfo::notAvailable ? "-" : std::to_string(figure);
    }
    return text;
}

class ReplacedTable : public testing::TestWithParam<Report>
{
protected:
    // The table 1 is there, and the table 2 next to it, to take its place.
    void makeTables() const
    {
        std::filesystem::remove_all(feed);
        std::filesystem::remove_all(next);
        numbered(1).writeTo(root, "feed");
        numbered(2).writeTo(root, "next");
    }

    void replaceFiles(std::size_t from, std::size_t to) const
    {
        for (std::size_t i = from; i < to; ++i) {
            std::filesystem::rename(next + "/" + files[i], feed + "/" + files[i]);
        }
    }

    // The numbers on disk once the first `replaced` files are those of the table 2, as far as the
    // report reads them.
    static std::string onDisk(std::size_t replaced)
    {
        std::string numbers(GetParam() == scan ? 2 : files.size(), '1');
        for (std::size_t i = 0; i < std::min(replaced, numbers.size()); ++i) {
            numbers[i] = '2';
        }
        return numbers;
    }

    // The number of steps of a report that nothing disturbs.
    unsigned stepsOfReport() const
    {
        makeTables();
        NameSteps const steps([](unsigned) {});
        EXPECT_EQ(GetParam()(), onDisk(0));
        return steps.count();
    }

    PrivateRoot root;
    std::string const feed = root.path() + "/feed";
    std::string const next = root.path() + "/next";
};

TEST_P(ReplacedTable, WhoseFilesAreReplacedOneByOneIsReportedAsItWasAtOneMoment)
{
    unsigned const steps = stepsOfReport();
    std::set<std::string> seen;
    for (unsigned first = 1; first <= steps + 1; ++first) {
        for (unsigned second = first; second <= steps + 1; ++second) {
            for (std::size_t early = 0; early <= files.size(); ++early) {
                makeTables();
                NameSteps const replacing([&](unsigned step) {
                    if (step == first) {
                        replaceFiles(0, early);
                    }
                    if (step == second) {
                        replaceFiles(early, files.size());
                    }
                });
                std::string const report = GetParam()();
                EXPECT_TRUE(report == onDisk(0) || report == onDisk(early) ||
                            report == onDisk(files.size()))
                    << report << " with " << early << " files replaced before step " << first
                    << ", the others before step " << second;
                seen.insert(report);
            }
        }
    }
    EXPECT_TRUE(seen.contains(onDisk(0)));
    EXPECT_TRUE(seen.contains(onDisk(files.size())));
}

TEST_P(ReplacedTable, WhoseDirectoryIsReplacedIsReportedAsItWasBeforeOrAfter)
{
    unsigned const steps = stepsOfReport();
    std::string const away = root.path() + "/away";
    std::set<std::string> seen;
    for (unsigned first = 1; first <= steps + 1; ++first) {
        for (unsigned second = first; second <= steps + 1; ++second) {
            makeTables();
            std::filesystem::remove_all(away);
            NameSteps const replacing([&](unsigned step) {
                if (step == first) {
                    std::filesystem::rename(feed, away);
                }
                if (step == second) {
                    std::filesystem::rename(next, feed);
                }
            });
            std::string const report = GetParam()();
            bool const wasGone = second > first;
            EXPECT_TRUE(report == onDisk(0) || report == onDisk(files.size()) ||
                        (wasGone && (report == failed || report.find('-') != report.npos)))
                << report << " with the directory away before step " << first
                << " and replaced before step " << second;
            seen.insert(report);
        }
    }
    EXPECT_TRUE(seen.contains(onDisk(0)));
    EXPECT_TRUE(seen.contains(onDisk(files.size())));
}

TEST_P(ReplacedTable, ThatIsReplacedAllTheTimeCannotBeAttachedAndTheReasonIsSaid)
{
    makeTables();
    setenv("DOVAN_DEBUG", "1", 1);
    std::string const other = root.path() + "/other";
    testing::internal::CaptureStderr();
    NameSteps const replacing([&](unsigned) {
        std::filesystem::rename(feed, other);
        std::filesystem::rename(next, feed);
        std::filesystem::rename(other, next);
    });
    if (GetParam() == headerReport) {  // which looks at standard error itself
        Quask::QuaskReaderGeneric reader("feed");
        EXPECT_FALSE(reader.attach());
    } else {
        EXPECT_THAT(GetParam()(), testing::AnyOf(failed, "----", "--"));
    }
    unsetenv("DOVAN_DEBUG");
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("Quask-feed 1: attachTogether() the table's files were replaced "
                                   "while they were being attached, attempts: 100\n"));
}

INSTANTIATE_TEST_SUITE_P(Reports, ReplacedTable, testing::Values(scan, headerReport, figures),
                         [](testing::TestParamInfo<Report> const& report) {
                             return report.param == scan           ? "Scan"
                                    : report.param == headerReport ? "HeaderReport"
                                                                   : "Figures";
                         });

}  // namespace
