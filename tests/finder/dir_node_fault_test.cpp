// Directories that cannot be opened, read or closed.
#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "base/exception.h"
#include "finder/dir_node.h"
#include "finder/surroundings.h"
#include "support/private_root.h"
#include "support/recording_handler.h"

namespace {

using Quask::DirNode;
using QuaskTesting::RecordingHandler;
using Lines = std::vector<std::string>;
using Node = std::shared_ptr<DirNode>;

class DirNodeFault : public testing::Test
{
protected:
    Node open(std::string const& path, Node parent = nullptr)
    {
        return std::make_shared<DirNode>(handler, path, std::move(parent));
    }

    // What is logged when `path` cannot be opened for this reason.
    static Lines failedToOpen(int level, std::string const& path, std::string const& reason)
    {
        return {"9 DirNode::DirNode() path: " + path, std::to_string(level) +
                                                          " DirNode::DirNode() failed to open " +
                                                          path + " errno: " + reason};
    }

    QuaskTesting::PrivateRoot root;
    RecordingHandler handler;
};

TEST_F(DirNodeFault, AMissingDirectoryHasNoEntries)
{
    std::string const path = root.path() + "/missing";
    Node node = open(path);
    EXPECT_FALSE(node->isOpen());
    EXPECT_EQ(handler.lines, failedToOpen(5, path, "No such file or directory"));
    handler.lines.clear();
    EXPECT_EQ(node->readEntry(), nullptr);
    EXPECT_EQ(handler.lines, (Lines{"9 DirNode::readEntry() path: " + path,
                                    "5 DirNode::readEntry() cannot read " + path +
                                        " because the directory is not open"}));
    EXPECT_EQ(node->readEntry(), nullptr);
    handler.lines.clear();
    node = nullptr;
    EXPECT_EQ(handler.lines, Lines{"9 DirNode::~DirNode() path: " + path});
}

TEST_F(DirNodeFault, ADirectoryThatAppearsLaterIsNotOpenedAgain)
{
    Node const node = open(root.path() + "/late");
    root.makeDirectory("late");
    EXPECT_EQ(node->readEntry(), nullptr);
    EXPECT_FALSE(node->isOpen());
}

TEST_F(DirNodeFault, AFileIsNotADirectory)
{
    std::string const path = root.writeFile("file", "x");
    EXPECT_FALSE(open(path)->isOpen());
    handler.lines.resize(2);
    EXPECT_EQ(handler.lines, failedToOpen(5, path, "Not a directory"));
}

TEST_F(DirNodeFault, APipeIsNotADirectoryAndIsNotWaitedFor)
{
    std::string const path = root.path() + "/pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_FALSE(open(path)->isOpen());
    handler.lines.resize(2);
    EXPECT_EQ(handler.lines, failedToOpen(5, path, "Not a directory"));
}

TEST_F(DirNodeFault, AForbiddenDirectoryIsAnOrdinaryFailure)
{
    std::string const path = root.makeDirectory("forbidden");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    {
        QuaskTesting::OrdinaryUser const user;
        if (!user.succeeded()) {
            GTEST_SKIP() << "root cannot become another user here";
        }
        EXPECT_FALSE(open(path)->isOpen());
    }
    ASSERT_EQ(chmod(path.c_str(), 0700), 0);
    handler.lines.resize(2);
    EXPECT_EQ(handler.lines, failedToOpen(5, path, "Permission denied"));
}

TEST_F(DirNodeFault, AnyOtherReasonIsSystemTrouble)
{
    std::string const loop = root.path() + "/loop";
    ASSERT_EQ(symlink("loop", loop.c_str()), 0);
    EXPECT_FALSE(open(loop)->isOpen());
    handler.lines.resize(2);
    EXPECT_EQ(handler.lines, failedToOpen(1, loop, "Too many levels of symbolic links"));

    handler.lines.clear();
    std::string const longPath = root.path() + "/" + std::string(5000, 'x');
    EXPECT_FALSE(open(longPath)->isOpen());
    handler.lines.resize(2);
    EXPECT_EQ(handler.lines, failedToOpen(1, longPath, "File name too long"));
}

TEST_F(DirNodeFault, RunningOutOfDescriptorsIsSystemTrouble)
{
    std::string const directory = root.makeDirectory("directory");
    Node const first = open(root.path());
    handler.lines.clear();
    QuaskTesting::DescriptorLimit const limit(0);
    Node const second = open(directory, first);
    EXPECT_TRUE(first->isOpen());
    EXPECT_FALSE(second->isOpen());
    EXPECT_EQ(handler.lines, failedToOpen(1, directory, "Too many open files"));
    EXPECT_EQ(second->readEntry(), nullptr);
    EXPECT_NE(second->parent()->readEntry(), nullptr);
}

TEST_F(DirNodeFault, AFailedReadIsLoggedAndThrown)
{
    Node const node = open(root.path());
    QuaskTesting::makeUnreadable(QuaskTesting::descriptorOf(root.path()));
    std::string const message =
        "DirNode::readEntry() failed to read " + root.path() + " errno: Not a directory";
    handler.lines.clear();
    try {
        node->readEntry();
        FAIL() << "nothing was thrown";
    } catch (Dovan::RuntimeException const& exception) {
        EXPECT_EQ(exception.what(), message);
    }
    EXPECT_EQ(handler.lines,
              (Lines{"9 DirNode::readEntry() path: " + root.path(), "0 " + message}));
}

TEST_F(DirNodeFault, AnErrorOfAnEarlierCallIsNotTakenForAFailedRead)
{
    Node const node = open(root.path());
    node->readEntry();
    node->readEntry();
    errno = EIO;
    EXPECT_EQ(node->readEntry(), nullptr);
}

TEST_F(DirNodeFault, AFailedCloseIsLoggedAndIgnored)
{
    Node node = open(root.path());
    close(QuaskTesting::descriptorOf(root.path()));
    handler.lines.clear();
    EXPECT_NO_THROW(node = nullptr);
    EXPECT_EQ(handler.lines, (Lines{"9 DirNode::~DirNode() path: " + root.path(),
                                    "1 DirNode::~DirNode() failed to close " + root.path() +
                                        " errno: Bad file descriptor"}));
}

// Opens and reads a directory that is open, one that is missing, one that cannot be opened, one
// that cannot be read and one that cannot be closed; the levels that reach the handler.
std::vector<int> levelsOfEveryFailure(RecordingHandler& handler,
                                      QuaskTesting::PrivateRoot const& root)
{
    std::string const loop = root.path() + "/loop";
    EXPECT_EQ(symlink("loop", loop.c_str()), 0);
    DirNode(handler, root.path() + "/missing", nullptr).readEntry();
    DirNode(handler, loop, nullptr).readEntry();
    {
        DirNode const unreadable(handler, root.path(), nullptr);
        QuaskTesting::makeUnreadable(QuaskTesting::descriptorOf(root.path()));
        EXPECT_THROW(unreadable.readEntry(), Dovan::RuntimeException);
    }
    {
        DirNode const closed(handler, root.path(), nullptr);
        close(QuaskTesting::descriptorOf(root.path()));
    }
    std::vector<int> levels;
    for (std::string const& line : handler.lines) {
        levels.push_back(line.front() - '0');
    }
    return levels;
}

TEST_F(DirNodeFault, OnlyTheErrorThatIsThrownIsOfLevelZero)
{
    RecordingHandler errors(0);
    EXPECT_EQ(levelsOfEveryFailure(errors, root), std::vector<int>{0});
}

TEST_F(DirNodeFault, SystemTroubleIsOfLevelOne)
{
    RecordingHandler trouble(1);
    EXPECT_EQ(levelsOfEveryFailure(trouble, root), (std::vector<int>{1, 0, 1}));
}

TEST_F(DirNodeFault, OrdinaryFailuresAreOfLevelFive)
{
    RecordingHandler routine(5);
    EXPECT_EQ(levelsOfEveryFailure(routine, root), (std::vector<int>{5, 5, 1, 5, 0, 1}));
}

TEST_F(DirNodeFault, ASilentHandlerGetsNothing)
{
    RecordingHandler silent(-1);
    EXPECT_EQ(levelsOfEveryFailure(silent, root), std::vector<int>{});
}

}  // namespace
