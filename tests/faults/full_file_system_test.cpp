// A report that is written to a file system without room for it.

#include "faults/full_file_system.h"

namespace {

class FullFileSystem : public QuaskTesting::FullFileSystemTest
{};

TEST_F(FullFileSystem, TakesWhatFitsOfAScanThatThenFails)
{
    expectAnErrorAfterWhatFits();
}

TEST_F(FullFileSystem, LeavesAReportFileIncompleteWithoutAMessage)
{
    expectAReportFileWithoutWhatDoesNotFit();
}

}  // namespace
