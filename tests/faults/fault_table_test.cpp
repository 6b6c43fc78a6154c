// docs/faults.md has a row for every test of this program, and names no other.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

// The names in the last column, sorted.
Names namesInTheDocument()
{
    std::ifstream document(FAULTS_DOCUMENT);
    Names names;
    for (std::string line; std::getline(document, line);) {
        std::size_t const end = line.rfind("` |");
        if (line.starts_with("| ") && end != std::string::npos) {
            std::size_t const start = line.rfind('`', end - 1) + 1;
            names.push_back(line.substr(start, end - start));
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The names of the program's tests but for this one, sorted.
Names namesInTheProgram()
{
    testing::UnitTest const& program = *testing::UnitTest::GetInstance();
    Names names;
    for (int i = 0; i < program.total_test_suite_count(); ++i) {
        testing::TestSuite const& suite = *program.GetTestSuite(i);
        for (int j = 0; j < suite.total_test_count(); ++j) {
            std::string const suiteName = suite.name();
            if (suiteName != "FaultTable") {
                names.push_back(suiteName + "." + suite.GetTestInfo(j)->name());
            }
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(FaultTable, NamesEveryTestAndNoOther)
{
    EXPECT_EQ(namesInTheDocument(), namesInTheProgram());
}

}  // namespace
